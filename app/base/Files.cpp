#include "app/base/Files.h"

#include "app/base/PlatformFiles.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <random>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace wagemill {

namespace fs = std::filesystem;
using platform::Opening;

namespace {

struct {
    fs::path folder;
    fs::path privateFolder;                  ///< empty: TEMP was set by the user, and nothing of ours is to be removed
    std::shared_ptr<void> privateFolderLock; ///< held until the process is gone: no other start removes the folder
    std::function<void()> windowEventPump;
    bool isPumping = false;
    std::function<void()> end;
} program;

[[noreturn]] void throwFileError(std::string_view what, const fs::path& path, std::string_view reason)
{
    throw std::runtime_error(std::string(what) + " \"" + path.string() + "\": " + std::string(reason) + ".");
}

/// Runs the work; a std::system_error of it becomes a failure that names the file.
template <typename Work>
auto namingTheFile(std::string_view what, const fs::path& path, Work&& work)
{
    try {
        return work();
    } catch (const std::system_error& error) {
        throwFileError(what, path, error.code().message());
    }
}

/// Whoever can give our names to something else could otherwise have us read or write what is not ours.
void requireOwn(const platform::FileFacts& facts, const fs::path& path)
{
    const std::pair<bool, const char*> objections[] = {
        {facts.type == fs::file_type::symlink, "it is a link"},
        {facts.type != fs::file_type::regular, "it is not a plain file"},
        {!facts.isUsersOwn, "it belongs to another user"},
        {facts.names > 1, "it is hard-linked"},
    };
    for (const auto& [applies, reason] : objections)
        if (applies)
            throwFileError("Cannot open", path,
                           std::string(reason) + ". Please remove it, or let TEMP name another folder");
}

/// A file descriptor that closes itself. What fails throws std::system_error.
class OpenFile {
public:
    OpenFile(const fs::path& path, Opening how) : m_descriptor(platform::openFile(path, how)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    platform::FileFacts facts() const { return platform::factsOf(m_descriptor); }

    std::vector<std::byte> readAll() const
    {
        std::vector<std::byte> bytes(static_cast<std::size_t>(facts().size));
        std::size_t filled = 0;
        while (const std::size_t count = moved(::read, bytes.data() + filled, bytes.size() - filled))
            filled += count;
        bytes.resize(filled);
        return bytes;
    }

    /// Closes the file as well, so that an error of a late write is seen.
    void writeAll(std::span<const std::byte> bytes, FileLife life)
    {
        while (!bytes.empty())
            bytes = bytes.subspan(moved(::write, bytes.data(), bytes.size()));
        if (life == FileLife::Kept)
            platform::flush(m_descriptor);
        if (::close(std::exchange(m_descriptor, -1)) != 0)
            throw std::system_error(errno, std::generic_category());
    }

private:
    /// How many bytes the call moved, as many as the system moves at a time. Reading: 0 at the end of the file.
    std::size_t moved(auto* call, auto* bytes, std::size_t count) const
    {
        constexpr std::size_t max = std::size_t{1} << 24U;
        for (;;) {
            const auto answer = call(m_descriptor, bytes, static_cast<unsigned>(std::min(count, max)));
            if (answer >= 0)
                return static_cast<std::size_t>(answer);
            if (errno != EINTR)
                throw std::system_error(errno, std::generic_category());
        }
    }

    int m_descriptor;
};

std::string freshName(std::string_view stem)
{
    std::random_device random;
    return std::string(stem) + std::to_string(random()) + std::to_string(random());
}

constexpr std::string_view privateFolderStem = "wagemill-run-";

/// Removes the folders of killed runs, which may hold wages.
void removeAbandonedFolders(const fs::path& parent)
{
    std::error_code ignored;
    for (fs::directory_iterator entry(parent, ignored), end; entry != end; entry.increment(ignored)) {
        if (!entry->path().filename().native().starts_with(fs::path(privateFolderStem).native()))
            continue;
        const auto facts = platform::factsAt(entry->path());
        if (!facts || facts->type != fs::file_type::directory || !facts->isUsersOwn || !facts->isPrivate)
            continue;
        if (const auto lock = platform::tryToLockFolder(entry->path()); lock && *lock) // else its run is alive
            fs::remove_all(entry->path(), ignored);
    }
}

void removePrivateFolder()
{
    std::error_code ignored;
    if (!program.privateFolder.empty())
        fs::remove_all(program.privateFolder, ignored);
}

} // namespace

bool fileExists(const fs::path& path)
{
    std::error_code error;
    static_cast<void>(fs::last_write_time(path, error)); // only whether it can be asked counts
    return !error;
}

void deleteFileQuietly(const fs::path& path)
{
    processWindowEvents();
    std::error_code ignored;
    const fs::file_status status = fs::symlink_status(path, ignored);
    if (!fs::exists(status) || fs::is_directory(status))
        return;
    if (!fs::remove(path, ignored))
        platform::deleteByForce(path);
}

void writeBytesToFile(std::span<const std::byte> bytes, const fs::path& path)
{
    requireOwnFile(path);
    namingTheFile("Cannot write the file", path, [&] {
        OpenFile file(path, Opening::Write);
        requireOwn(file.facts(), path);
        file.writeAll(bytes, FileLife::Temporary);
    });
}

void writeWholeFile(std::span<const std::byte> bytes, const fs::path& path, FileLife life)
{
    // In one folder, renaming replaces in one step.
    const fs::path unfinished = path.parent_path() / freshName(".wagemill-").append(".part");
    try {
        OpenFile(unfinished, life == FileLife::Kept ? Opening::MakeNormal : Opening::MakePrivate).writeAll(bytes, life);
        platform::renameFile(unfinished, path);
    } catch (const std::system_error& error) {
        std::error_code ignored;
        fs::remove(unfinished, ignored);
        throwFileError("Cannot write the file", path, error.code().message());
    }
}

std::vector<std::byte> readBytesFromFile(const fs::path& path)
{
    constexpr std::string_view failure = "Cannot read the file";
    return namingTheFile(failure, path, [&] {
        const OpenFile file(path, Opening::Read);
        if (file.facts().type != fs::file_type::regular)
            throwFileError(failure, path, "it is not a plain file");
        return file.readAll();
    });
}

std::vector<std::byte> readOwnFile(const fs::path& path)
{
    requireOwnFile(path); // a device must not even be opened; what was put there since is met below
    return namingTheFile("Cannot read the file", path, [&] {
        const OpenFile file(path, Opening::ReadOwn);
        requireOwn(file.facts(), path);
        return file.readAll();
    });
}

void requireOwnFile(const fs::path& path)
{
    if (const auto facts = platform::factsAt(path))
        requireOwn(*facts, path);
}

void setProgramFolder(const fs::path& folder)
{
    program.folder = folder;
}

fs::path besideProgram(std::string_view name)
{
    return fs::path(program.folder) += fs::path(name).make_preferred();
}

fs::path inTemporaryFolder(std::string_view name)
{
    return platform::environmentPath("TEMP") += fs::path(name).make_preferred();
}

fs::path makePrivateFolder()
{
    const fs::path parent = platform::parentOfPrivateFolders();
    removeAbandonedFolders(parent);
    for (;;) {
        fs::path folder = parent / freshName(privateFolderStem);
        namingTheFile("Cannot make a temporary folder", folder, [&] { platform::makePrivateFolder(folder); });
        const auto lock = platform::tryToLockFolder(folder);
        if (!lock || !fileExists(folder))
            continue; // another start has just taken it for an abandoned one
        program.privateFolderLock = *lock;
        return folder;
    }
}

void ensureTemporaryFolder()
{
    if (!platform::environmentPath("TEMP").empty())
        return;
    program.privateFolder = makePrivateFolder();
    platform::setEnvironmentPath("TEMP", program.privateFolder);
    std::atexit(removePrivateFolder);
}

std::shared_ptr<void> lockTemporaryFolder()
{
    constexpr std::chrono::seconds patience(10); // a build takes well under a second
    constexpr std::chrono::milliseconds pause(1);
    const fs::path folder = inTemporaryFolder("");
    if (folder == program.privateFolder)
        return nullptr; // nobody else works in the run's own
    const auto end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        if (auto lock = platform::tryToLockFolder(folder))
            return *std::move(lock);
        if (std::chrono::steady_clock::now() >= end)
            throw std::runtime_error("The folder \"" + folder.string() +
                                     "\" is in use: another program is making a workbook there.");
        std::this_thread::sleep_for(pause);
    }
}

bool isDevelopmentRun()
{
#ifdef NDEBUG
    return false;
#else
    return true;
#endif
}

void setWindowEventPump(std::function<void()> pump)
{
    program.windowEventPump = std::move(pump);
}

void processWindowEvents()
{
    if (!program.windowEventPump)
        return;
    const bool wasPumping = std::exchange(program.isPumping, true);
    program.windowEventPump();
    program.isPumping = wasPumping;
}

bool isProcessingWindowEvents()
{
    return program.isPumping;
}

void endProgram()
{
    if (const auto end = program.end) // a copy: it may set another end
        return end();
    removePrivateFolder();
    platform::endProcess();
}

void setProgramEnd(std::function<void()> end)
{
    program.end = std::move(end);
}

} // namespace wagemill
