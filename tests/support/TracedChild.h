#pragma once

/// Declares a function that runs a child process and stops the child at a chosen system call.

#include <csignal>
#include <functional>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

/// The result of `RunTraced`.
struct TracedEnd {
    bool isReached = false; ///< Whether the child has reached the stop.
    int status = 0;         ///< The status from waitpid.
};

/// Runs `work` in a child. The child stops before and after each system call. At the stop with the index
/// `number`, counted from 0, calls `intervene` with the process id of the child. The exit status of the child
/// is the result of `work`, or 99 if the child cannot be traced.
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
