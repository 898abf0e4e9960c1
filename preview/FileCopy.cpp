#include "preview/FileCopy.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

namespace wagemill {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t blockSize = 1 << 16; // bytes

/// A fresh name beside `target`: in one folder, renaming replaces in one step.
fs::path neighbourOf(const fs::path& target)
{
    std::random_device chance;
    return target.parent_path() / (".wagemill-" + std::to_string(chance()) + std::to_string(chance()) + ".part");
}

/// Removes a file that was not renamed.
class UnfinishedFile {
public:
    explicit UnfinishedFile(fs::path path) : m_path(std::move(path)) {}
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile()
    {
        std::error_code ignored;
        fs::remove(m_path, ignored);
    }

    const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

[[noreturn]] void throwLastError()
{
    throw std::system_error(errno, std::generic_category());
}

void copyBytes(const fs::path& from, const fs::path& to)
{
    std::ifstream source(from, std::ios::binary);
    if (!source)
        throwLastError();
    std::ofstream copy(to, std::ios::binary | std::ios::trunc);
    std::array<char, blockSize> block;
    while (copy && source) {
        source.read(block.data(), block.size());
        copy.write(block.data(), source.gcount());
    }
    copy.close(); // the last bytes may meet a full disk only now
    if (source.bad() || !copy)
        throwLastError();
}

} // namespace

bool isSameFile(const fs::path& one, const fs::path& other)
{
    std::error_code error;
    return fs::equivalent(one, other, error) && !error;
}

void copyFile(const fs::path& from, const fs::path& to)
{
    if (isSameFile(from, to))
        return;
    try {
        const UnfinishedFile unfinished(neighbourOf(to));
        copyBytes(from, unfinished.path());
        fs::rename(unfinished.path(), to);
    } catch (const std::system_error& error) {
        throw std::runtime_error("Cannot copy the file \"" + from.string() + "\" to \"" + to.string() +
                                 "\": " + error.code().message() + ".");
    }
}

} // namespace wagemill
