#include "app/base/Files.h"
#include "app/base/PlatformFiles.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
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
    OpenFile(OpenFile&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    OpenFile& operator=(OpenFile&& other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
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

/// Why a file is not to be touched; "" when it is a plain file of the user's own that has no other name. Whoever can
/// give our names to something else could otherwise have us read or write what is not ours.
std::string_view objectionTo(const struct stat& status)
{
    if (S_ISLNK(status.st_mode))
        return "it is a link";
    if (!S_ISREG(status.st_mode))
        return "it is no plain file";
    if (status.st_uid != ::geteuid())
        return "it belongs to another user";
    return status.st_nlink > 1 ? "it has a second name elsewhere" : "";
}

void requireOwn(std::string_view what, const fs::path& path, const struct stat& status)
{
    if (const std::string_view objection = objectionTo(status); !objection.empty())
        throw std::runtime_error(std::string(what) + " \"" + path.string() + "\": " + std::string(objection) +
                                 ". Please remove it, or let TEMP name another folder.");
}

/// All at once, or as much as the system takes at a time. Throws std::system_error.
void writeAll(int descriptor, std::span<const std::byte> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throw std::system_error(errno, std::generic_category());
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

/// The rest of the file. `status` is that of the open file.
std::vector<std::byte> readAll(const OpenFile& file, const struct stat& status, const fs::path& path)
{
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

struct stat statusOf(const OpenFile& file, std::string_view what, const fs::path& path)
{
    struct stat status = {};
    if (!file.isOpen() || ::fstat(file.descriptor(), &status) != 0)
        throwFileError(what, path, errno);
    return status;
}

fs::path parentOfPrivateFolders()
{
    std::error_code error;
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR");
        runtime != nullptr && fs::is_directory(runtime, error) && ::access(runtime, W_OK) == 0)
        return runtime;
    const fs::path system = fs::temp_directory_path(error);
    return error ? fs::path("/tmp") : system;
}

constexpr std::string_view privateFolderStem = "wagemill-run-";
constexpr std::string_view freshLetters = "XXXXXX"; ///< mkdtemp puts letters of its own in their place

/// A run holds the lock of its folder for as long as it lives, however it ends. Invalid when somebody else holds it, or
/// the folder is gone.
OpenFile holdFolder(const fs::path& folder)
{
    OpenFile held(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    if (held.isOpen() && (::flock(held.descriptor(), LOCK_EX | LOCK_NB) != 0 ||
                          ::fstat(held.descriptor(), &status) != 0 || status.st_nlink == 0))
        held.close();
    return held;
}

bool isPrivateFolderOfOurs(const fs::path& folder)
{
    struct stat status = {};
    const std::string name = folder.filename().string();
    return name.starts_with(privateFolderStem) && name.size() == privateFolderStem.size() + freshLetters.size() &&
           ::lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

/// Removes what killed runs left behind; it may hold wages.
void removeAbandonedFolders(const fs::path& parent)
{
    std::error_code ignored;
    for (fs::directory_iterator entry(parent, ignored), end; entry != end; entry.increment(ignored))
        if (isPrivateFolderOfOurs(entry->path()))
            if (const OpenFile held = holdFolder(entry->path()); held.isOpen())
                fs::remove_all(entry->path(), ignored);
}

} // namespace

void writeBytesToFile(std::span<const std::byte> bytes, const fs::path& path)
{
    constexpr std::string_view failure = "Cannot write the file";
    requireOwnFile(path);
    OpenFile file(::open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR));
    requireOwn(failure, path, statusOf(file, failure, path));
    try {
        writeAll(file.descriptor(), bytes);
    } catch (const std::system_error& error) {
        throwFileError(failure, path, error.code().value());
    }
    if (!file.close())
        throwFileError(failure, path, errno);
}

std::vector<std::byte> readBytesFromFile(const fs::path& path)
{
    // Not to be kept waiting by a pipe that nobody writes to.
    const OpenFile file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    const struct stat status = statusOf(file, "Cannot read the file", path);
    if (!S_ISREG(status.st_mode))
        throw std::runtime_error("Cannot read \"" + path.string() + "\": it is no plain file.");
    return readAll(file, status, path);
}

std::vector<std::byte> readOwnFile(const fs::path& path)
{
    requireOwnFile(path); // a device must not even be opened; what was put there since is met below
    const OpenFile file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    const struct stat status = statusOf(file, "Cannot read the file", path);
    requireOwn("Cannot open", path, status);
    return readAll(file, status, path);
}

void requireOwnFile(const fs::path& path)
{
    struct stat status = {};
    if (::lstat(path.c_str(), &status) == 0)
        requireOwn("Cannot open", path, status);
}

namespace platform {

void deleteByForce(const fs::path& path)
{
    std::error_code ignored;
    if (!fs::is_symlink(fs::symlink_status(path, ignored))) // the permissions of a link would be its target's
        fs::permissions(path, fs::perms::owner_write, fs::perm_options::add, ignored);
    fs::remove(path, ignored);
}

void writeNewFile(std::span<const std::byte> bytes, const fs::path& path, FileLife life)
{
    const mode_t usersNormal = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH; // less what umask withholds
    const mode_t mode = life == FileLife::Kept ? usersNormal : S_IRUSR | S_IWUSR;
    OpenFile file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file.isOpen())
        throw std::system_error(errno, std::generic_category());
    writeAll(file.descriptor(), bytes);
    const bool isSafe = life == FileLife::Temporary || ::fsync(file.descriptor()) == 0 || errno == EINVAL;
    if (!isSafe || !file.close())
        throw std::system_error(errno, std::generic_category());
}

void renameFile(const fs::path& from, const fs::path& to)
{
    fs::rename(from, to);
}

fs::path makePrivateFolder()
{
    const fs::path parent = parentOfPrivateFolders();
    removeAbandonedFolders(parent);
    for (;;) {
        std::string name = (parent / privateFolderStem).string().append(freshLetters);
        if (::mkdtemp(name.data()) == nullptr)
            throwFileError("Cannot make a temporary folder", name, errno);
        // Held open until the process is gone, so that no other start takes the folder for an abandoned one.
        static OpenFile held(-1);
        held = holdFolder(name);
        if (held.isOpen())
            return name;
    }
}

std::shared_ptr<void> lockFolder(const fs::path& folder, std::chrono::milliseconds patience)
{
    constexpr std::chrono::milliseconds pause(1);
    auto file = std::make_shared<OpenFile>(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto end = std::chrono::steady_clock::now() + patience;
    while (::flock(file->descriptor(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK)
            return nullptr;
        if (std::chrono::steady_clock::now() >= end)
            throw std::runtime_error("The folder \"" + folder.string() +
                                     "\" is in use: another program is making a workbook there.");
        std::this_thread::sleep_for(pause);
    }
    return file;
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
