#pragma once

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

/// What the work answers in a child process; -1 when that cannot be made, 1000 and the signal's number when
/// one ends it.
inline int InChild(const std::function<int()>& work) {
    const pid_t child = fork();
    if (child == 0) _exit(work());
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

/// A user who owns nothing: tests may run as root, to whom permission bits mean nothing.
constexpr uid_t kOtherUser = 65534;

/// Whether the check holds in a child process of the other user (of this one, when it is not root).
inline bool HoldsForAnyUser(const std::function<bool()>& check) {
    return InChild([&check] {
               if (geteuid() == 0 && (setgid(kOtherUser) != 0 || setuid(kOtherUser) != 0)) return 2;
               return check() ? 0 : 1;
           }) == 0;
}
