#include "tests/reliability/FailingFiles.h"

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

namespace wagemill::test {

namespace {

FailingFiles* failing = nullptr;

/// Where a path that a call names leads; `folder` is the descriptor that a relative one is counted from.
std::filesystem::path absolutePath(int folder, const char* path)
{
    std::filesystem::path named = path;
    if (named.is_absolute())
        return named;
    std::error_code error;
    const std::string link = folder == AT_FDCWD ? "/proc/self/cwd" : "/proc/self/fd/" + std::to_string(folder);
    return std::filesystem::read_symlink(link, error) / named;
}

bool failsNamed(int folder, const char* path, bool deleting = false)
{
    return failing != nullptr && path != nullptr && failing->fails(absolutePath(folder, path), deleting);
}

bool failsOpen(int descriptor)
{
    std::error_code error;
    return failing != nullptr &&
           failing->fails(std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error));
}

int refuse()
{
    errno = failing->errorNumber();
    return -1;
}

/// The C library's own function of that name.
template <typename Function>
Function* real(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name)); // POSIX lets an address be a function's
}

using Open = int(const char*, int, ...);
using OpenAt = int(int, const char*, int, ...);
using Write = ssize_t(int, const void*, std::size_t);
using WriteAt = ssize_t(int, const void*, std::size_t, off_t);
using Sync = int(int);
using Truncate = int(int, off_t);
using Name = int(const char*);
using NameMode = int(const char*, mode_t);
using TwoNames = int(const char*, const char*);

bool changes(int flags)
{
    return (flags & (O_CREAT | O_TRUNC)) != 0;
}

mode_t modeOf(int flags, std::va_list arguments)
{
    return (flags & O_CREAT) != 0 ? static_cast<mode_t>(va_arg(arguments, int)) : 0;
}

/// A disk that gets full takes what still fits: the call before the refusal is answered with less than was asked.
template <typename Rest>
ssize_t writeFile(int descriptor, std::size_t size, Rest&& rest)
{
    if (!failsOpen(descriptor))
        return rest(size);
    return failing->errorNumber() == ENOSPC && size > 1 ? rest(size / 2) : refuse();
}

} // namespace

FailingFiles::FailingFiles(std::filesystem::path folder, Fault fault, int first, Until until)
    : m_folder(std::move(folder)), m_fault(fault), m_first(first), m_until(until)
{
    failing = this;
}

FailingFiles::~FailingFiles()
{
    failing = nullptr;
}

bool FailingFiles::fails(const std::filesystem::path& path, bool deleting)
{
    if (!path.native().starts_with(m_folder.native()) || (deleting && m_fault == Fault::Full))
        return false;
    ++m_calls;
    const bool refused = m_until == Until::Once ? m_calls == m_first : m_calls >= m_first;
    m_failed += refused ? 1 : 0;
    return refused;
}

int FailingFiles::errorNumber() const
{
    return m_fault == Fault::Full ? ENOSPC : EROFS;
}

// The names under which the whole process finds these instead of the C library's: labels of the assembler, because the
// library's headers declare some of them in ways that do not allow another definition.
#define STANDS_FOR(name) __asm__(name) __attribute__((visibility("default"), used))

// The same function under another name.
__asm__(".globl open64, pwrite64, ftruncate64, fdatasync\n"
        ".set open64, open\n"
        ".set pwrite64, pwrite\n"
        ".set ftruncate64, ftruncate\n"
        ".set fdatasync, fsync\n");

extern "C" {
int failingOpen(const char* path, int flags, ...) STANDS_FOR("open");
int failingOpenAt(int folder, const char* path, int flags, ...) STANDS_FOR("openat");
ssize_t failingWrite(int descriptor, const void* bytes, std::size_t size) STANDS_FOR("write");
ssize_t failingPwrite(int descriptor, const void* bytes, std::size_t size, off_t at) STANDS_FOR("pwrite");
int failingFsync(int descriptor) STANDS_FOR("fsync");
int failingFtruncate(int descriptor, off_t size) STANDS_FOR("ftruncate");
int failingMkdir(const char* path, mode_t mode) STANDS_FOR("mkdir");
int failingRename(const char* from, const char* to) STANDS_FOR("rename");
int failingUnlink(const char* path) STANDS_FOR("unlink");
int failingRemove(const char* path) STANDS_FOR("remove");

int failingOpen(const char* path, int flags, ...)
{
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return changes(flags) && failsNamed(AT_FDCWD, path) ? refuse() : real<Open>("open")(path, flags, mode);
}

int failingOpenAt(int folder, const char* path, int flags, ...)
{
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeOf(flags, arguments);
    va_end(arguments);
    return changes(flags) && failsNamed(folder, path) ? refuse() : real<OpenAt>("openat")(folder, path, flags, mode);
}

ssize_t failingWrite(int descriptor, const void* bytes, std::size_t size)
{
    return writeFile(descriptor, size, [&](std::size_t part) { return real<Write>("write")(descriptor, bytes, part); });
}

ssize_t failingPwrite(int descriptor, const void* bytes, std::size_t size, off_t at)
{
    return writeFile(descriptor, size,
                     [&](std::size_t part) { return real<WriteAt>("pwrite")(descriptor, bytes, part, at); });
}

int failingFsync(int descriptor)
{
    return failsOpen(descriptor) ? refuse() : real<Sync>("fsync")(descriptor);
}

int failingFtruncate(int descriptor, off_t size)
{
    return failsOpen(descriptor) ? refuse() : real<Truncate>("ftruncate")(descriptor, size);
}

int failingMkdir(const char* path, mode_t mode)
{
    return failsNamed(AT_FDCWD, path) ? refuse() : real<NameMode>("mkdir")(path, mode);
}

int failingRename(const char* from, const char* to)
{
    return failsNamed(AT_FDCWD, to) ? refuse() : real<TwoNames>("rename")(from, to);
}

int failingUnlink(const char* path)
{
    return failsNamed(AT_FDCWD, path, true) ? refuse() : real<Name>("unlink")(path);
}

int failingRemove(const char* path)
{
    return failsNamed(AT_FDCWD, path, true) ? refuse() : real<Name>("remove")(path);
}
}

} // namespace wagemill::test
