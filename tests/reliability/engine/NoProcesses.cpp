#include "tests/reliability/engine/NoProcesses.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <vector>

namespace wagemill::test {

namespace {

sock_filter load(std::size_t offset)
{
    return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned>(offset));
}

sock_filter answer(unsigned action)
{
    return BPF_STMT(BPF_RET | BPF_K, action);
}

/// Goes on with the next instruction when the number that was loaded is this one, else passes over it.
sock_filter unlessEqual(unsigned number)
{
    return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1);
}

} // namespace

bool forbidProcessesAndSockets()
{
    std::vector<sock_filter> program = {load(offsetof(seccomp_data, nr))};
    for (const unsigned call : {__NR_execve, __NR_execveat, __NR_socket, __NR_socketpair, __NR_connect,
#ifdef __NR_fork // younger machines know only clone
                                __NR_fork, __NR_vfork
#endif
         }) {
        program.push_back(unlessEqual(call));
        program.push_back(answer(SECCOMP_RET_KILL_PROCESS));
    }
    program.push_back(unlessEqual(__NR_clone3)); // its flags lie in memory; without it the C library uses clone
    program.push_back(answer(SECCOMP_RET_ERRNO | ENOSYS));
    program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_clone, 0, 3));
    program.push_back(load(offsetof(seccomp_data, args[0])));
    program.push_back(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, CLONE_THREAD, 1, 0));
    program.push_back(answer(SECCOMP_RET_KILL_PROCESS));
    program.push_back(answer(SECCOMP_RET_ALLOW));
    const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

} // namespace wagemill::test
