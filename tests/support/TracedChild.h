#pragma once

/// Runs a child process and stops the child at a given system call.

#include <csignal>
#include <functional>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

/// The end of a traced child.
struct TracedEnd {
    bool isReached = false; ///< Whether the child has reached the stop.
    int status = 0;         ///< As waitpid reports it.
};

/// Runs `work` in a child and calls `intervene` once, at the stop `number` of the child, counted from 0. The
/// child stops before and after each system call. The exit status of the child is the result of `work`, or 99
/// if the child cannot be traced.
inline TracedEnd RunTraced(unsigned number, const std::function<int()>& work,
                           const std::function<void(pid_t)>& intervene) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(99);
        raise(SIGSTOP);
        _exit(work());
    }
    TracedEnd end;
    for (unsigned stop = 0; waitpid(child, &end.status, 0) == child && WIFSTOPPED(end.status); ++stop) {
        if (stop == number + 1) { // the first stop is the child's own
            end.isReached = true;
            intervene(child);
        }
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    }
    return end;
}
