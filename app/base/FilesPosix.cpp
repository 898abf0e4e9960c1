#include "app/base/PlatformFiles.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace wagemill::platform {

namespace fs = std::filesystem;

namespace {

constexpr mode_t userAlone = S_IRUSR | S_IWUSR;
constexpr mode_t usersNormal = userAlone | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH; // less what umask withholds

int succeeded(int answer)
{
    if (answer < 0)
        throw std::system_error(errno, std::generic_category());
    return answer;
}

FileFacts factsOf(const struct stat& status)
{
    const mode_t mode = status.st_mode;
    const auto type = S_ISLNK(mode)   ? fs::file_type::symlink
                      : S_ISREG(mode) ? fs::file_type::regular
                      : S_ISDIR(mode) ? fs::file_type::directory
                                      : fs::file_type::unknown;
    return {type, status.st_uid == ::geteuid(), (mode & (S_IRWXG | S_IRWXO)) == 0, status.st_nlink,
            static_cast<std::uint64_t>(status.st_size)};
}

} // namespace

std::optional<FileFacts> factsAt(const fs::path& path)
{
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0 ? std::optional(factsOf(status)) : std::nullopt;
}

FileFacts factsOf(int descriptor)
{
    struct stat status = {};
    succeeded(::fstat(descriptor, &status));
    return factsOf(status);
}

int openFile(const fs::path& path, Opening how)
{
    constexpr int flags[] = {O_RDONLY, O_RDONLY | O_NOFOLLOW, O_WRONLY | O_CREAT | O_NOFOLLOW,
                             O_WRONLY | O_CREAT | O_EXCL, O_WRONLY | O_CREAT | O_EXCL}; // in the order of Opening
    return succeeded(::open(path.c_str(), flags[static_cast<std::size_t>(how)] | O_NONBLOCK | O_CLOEXEC,
                            how == Opening::MakeNormal ? usersNormal : userAlone));
}

void flush(int descriptor)
{
    const int answer = ::fsync(descriptor);
    succeeded(answer < 0 && errno == EINVAL ? 0 : answer); // some file systems have nothing to flush
}

void deleteByForce(const fs::path& path)
{
    std::error_code ignored;
    if (!fs::is_symlink(fs::symlink_status(path, ignored))) // the permissions of a link would be its target's
        fs::permissions(path, fs::perms::owner_write, fs::perm_options::add, ignored);
    fs::remove(path, ignored);
}

void renameFile(const fs::path& from, const fs::path& to)
{
    fs::rename(from, to);
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

void makePrivateFolder(const fs::path& folder)
{
    succeeded(::mkdir(folder.c_str(), S_IRWXU));
}

std::optional<std::shared_ptr<void>> tryToLockFolder(const fs::path& folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    static char held; // the answer must point to something; what it owns is the descriptor
    std::shared_ptr<void> lock(&held, [descriptor](void*) { ::close(descriptor); });
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        return lock;
    if (errno == EWOULDBLOCK)
        return std::nullopt;
    return nullptr;
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

void endProcess()
{
    std::quick_exit(0);
}

} // namespace wagemill::platform
