#include "tests/reliability/FailingFiles.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <dlfcn.h>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>

namespace wagemill::test {

namespace {

struct FailingFiles {
    std::filesystem::path folder;
    Fault fault;
    int first;
    int last;
    int calls = 0;
};
std::optional<FailingFiles> failing; ///< while calls fail

bool refuses(const std::filesystem::path& path, bool deleting = false)
{
    if (!failing || !path.native().starts_with(failing->folder.native()) || (deleting && failing->fault == Fault::Full))
        return false;
    ++failing->calls;
    if (failing->calls < failing->first || failing->calls > failing->last)
        return false;
    errno = failing->fault == Fault::Full ? ENOSPC : EROFS;
    return true;
}

bool refusesOpen(int descriptor)
{
    std::error_code error;
    return failing && refuses(std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error));
}

/// Calls the C library's own function of that name.
template <typename Result = int, typename... Arguments>
Result real(const char* name, Arguments... arguments)
{
    return reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name))(arguments...);
}

/// A disk that gets full takes what still fits: the call before the refusal is answered with less than was asked.
template <typename... Place>
ssize_t writeFile(const char* name, int descriptor, const void* bytes, std::size_t size, Place... place)
{
    if (refusesOpen(descriptor)) {
        if (failing->fault == Fault::ReadOnly || size == 1)
            return -1;
        size /= 2;
    }
    return real<ssize_t>(name, descriptor, bytes, size, place...);
}

} // namespace

int failCalls(const std::filesystem::path& folder, Fault fault, int first, int last, const std::function<void()>& work)
{
    failing = {folder, fault, first, last};
    work();
    return std::exchange(failing, std::nullopt)->calls;
}

void failAtEveryCall(const std::filesystem::path& folder, const std::function<void()>& prepare,
                     const std::function<void()>& work, const std::function<void(Fault)>& check)
{
    for (const Fault fault : {Fault::Full, Fault::ReadOnly})
        for (const bool once : {true, false}) {
            int call = 0;
            for (bool failed = true; failed;) {
                ++call;
                SCOPED_TRACE((fault == Fault::Full ? "full, call " : "read-only, call ") + std::to_string(call));
                prepare();
                failed = failCalls(folder, fault, call, once ? call : INT_MAX, work) >= call;
                check(fault);
            }
            EXPECT_GT(call, 1) << "nothing was changed";
        }
}

// The names under which the whole process finds these instead of the C library's: set by the assembler, because the
// library's headers declare some of them in ways that do not allow another definition.
__asm__(".globl open, open64, write, pwrite, pwrite64, fsync, fdatasync, ftruncate, ftruncate64\n"
        ".globl mkdir, rename, unlink, remove\n"
        ".set open, failingOpen\n"
        ".set open64, failingOpen\n"
        ".set write, failingWrite\n"
        ".set pwrite, failingPwrite\n"
        ".set pwrite64, failingPwrite\n"
        ".set fsync, failingFsync\n"
        ".set fdatasync, failingFsync\n"
        ".set ftruncate, failingFtruncate\n"
        ".set ftruncate64, failingFtruncate\n"
        ".set mkdir, failingMkdir\n"
        ".set rename, failingRename\n"
        ".set unlink, failingRemove\n"
        ".set remove, failingRemove\n");

extern "C" {
/// mode  of a file that is made; what happens to be in its register otherwise
int failingOpen(const char* path, int flags, mode_t mode)
{
    return (flags & (O_CREAT | O_TRUNC)) != 0 && refuses(path) ? -1 : real("open", path, flags, mode);
}

ssize_t failingWrite(int descriptor, const void* bytes, std::size_t size)
{
    return writeFile("write", descriptor, bytes, size);
}

ssize_t failingPwrite(int descriptor, const void* bytes, std::size_t size, off_t at)
{
    return writeFile("pwrite", descriptor, bytes, size, at);
}

int failingFsync(int descriptor)
{
    return refusesOpen(descriptor) ? -1 : real("fsync", descriptor);
}

int failingFtruncate(int descriptor, off_t size)
{
    return refusesOpen(descriptor) ? -1 : real("ftruncate", descriptor, size);
}

int failingMkdir(const char* path, mode_t mode)
{
    return refuses(path) ? -1 : real("mkdir", path, mode);
}

int failingRename(const char* from, const char* to)
{
    return refuses(to) ? -1 : real("rename", from, to);
}

int failingRemove(const char* path)
{
    return refuses(path, true) ? -1 : real("remove", path);
}
}

} // namespace wagemill::test
