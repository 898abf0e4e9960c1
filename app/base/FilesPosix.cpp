#include "app/base/Files.h"
#include "app/base/PlatformFiles.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace wagemill {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void throwFileError(std::string_view what, const fs::path& path, int code)
{
    throw std::runtime_error(std::string(what) + " \"" + path.string() +
                             "\": " + std::generic_category().message(code) + ".");
}

/// A file descriptor that closes itself.
class OpenFile {
public:
    explicit OpenFile(int descriptor) : m_descriptor(descriptor) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    bool isOpen() const { return m_descriptor >= 0; }
    int descriptor() const { return m_descriptor; }
    /// Closes now, so that an error of a late write is seen.
    bool close() { return ::close(std::exchange(m_descriptor, -1)) == 0; }

private:
    int m_descriptor;
};

fs::path parentOfPrivateFolders()
{
    std::error_code error;
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR");
        runtime != nullptr && fs::is_directory(runtime, error) && ::access(runtime, W_OK) == 0)
        return runtime;
    const fs::path system = fs::temp_directory_path(error);
    return error ? fs::path("/tmp") : system;
}

} // namespace

void writeBytesToFile(std::span<const std::byte> bytes, const fs::path& path)
{
    OpenFile file(::open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.isOpen())
        throwFileError("Cannot write the file", path, errno);
    while (!bytes.empty()) {
        const ssize_t written = ::write(file.descriptor(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throwFileError("Cannot write the file", path, errno);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    if (!file.close())
        throwFileError("Cannot write the file", path, errno);
}

std::vector<std::byte> readBytesFromFile(const fs::path& path)
{
    // Not to be kept waiting by a pipe that nobody writes to.
    const OpenFile file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen())
        throwFileError("Cannot read the file", path, errno);
    struct stat status = {};
    if (::fstat(file.descriptor(), &status) != 0)
        throwFileError("Cannot read the file", path, errno);
    if (!S_ISREG(status.st_mode))
        throw std::runtime_error("Cannot read \"" + path.string() + "\": it is no plain file.");
    std::vector<std::byte> bytes(static_cast<std::size_t>(status.st_size));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count = ::read(file.descriptor(), bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throwFileError("Cannot read the file", path, errno);
        if (count == 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return bytes;
}

namespace platform {

void deleteByForce(const fs::path& path)
{
    std::error_code ignored;
    if (!fs::is_symlink(fs::symlink_status(path, ignored))) // the permissions of a link would be its target's
        fs::permissions(path, fs::perms::owner_write, fs::perm_options::add, ignored);
    fs::remove(path, ignored);
}

fs::path makePrivateFolder()
{
    std::string name = (parentOfPrivateFolders() / "wagemill-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
        throwFileError("Cannot make a temporary folder", name, errno);
    return name;
}

fs::path environmentPath(const char* name)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? fs::path() : fs::path(value);
}

void setEnvironmentPath(const char* name, const fs::path& value)
{
    ::setenv(name, value.c_str(), 1);
}

void atEveryEnd(void (*work)())
{
    std::atexit(work);
    std::at_quick_exit(work);
}

void endProcess()
{
    std::quick_exit(0);
}

} // namespace platform

} // namespace wagemill
