#pragma once

#include <csignal>
#include <functional>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

/// What became of a child that was traced.
struct TracedEnd {
    bool isReached = false; ///< The stop at which the test wanted to intervene.
    int status = 0;         ///< As waitpid tells it.
};

/// Runs the work in a child, which ends with what the work answers, and intervenes once, at its stop
/// `number`: the child stops twice for each system call, before it and behind it. A child that cannot be
/// traced ends with 99.
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
