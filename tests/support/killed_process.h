#pragma once

#include <csignal>
#include <functional>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

/// Work in a process of its own that is killed at a system call: these alone change what is on the disk.
namespace KilledProcess {

enum class End { Killed, Done, Failed, NotTraced };

/// Runs the work and kills it at the given stop; stops count from 1, two a system call, at its entry and its exit. The
/// work says whether it has succeeded.
inline End runAndKill(const std::function<bool()>& work, int stop) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(2);
        raise(SIGSTOP);
        _exit(work() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    for (int i = 0; WIFSTOPPED(status); ++i) {
        if (i == stop) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return End::Killed;
        }
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) > 1)
        return End::NotTraced;
    return WEXITSTATUS(status) == 0 ? End::Done : End::Failed;
}

} // namespace KilledProcess
