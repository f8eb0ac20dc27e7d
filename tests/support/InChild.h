#pragma once

/// Declares functions that run a part of a test in a child process, also as another user.

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

/// Runs `work` in a child process and returns its result, 0 to 255. Returns -1 if the child process cannot be
/// created. Returns 1000 plus the number of the signal if a signal kills the child.
inline int InChild(const std::function<int()>& work) {
    const pid_t child = fork();
    if (child == 0) _exit(work());
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

/// A user who owns no files. Permission bits do not restrict root, and tests can run as root.
constexpr uid_t kOtherUser = 65534;

/// Returns whether `check` returns true in a child process. The child runs as the other user if this process
/// runs as root.
inline bool IsTrueForAnyUser(const std::function<bool()>& check) {
    return InChild([&check] {
               if (geteuid() == 0 && (setgid(kOtherUser) != 0 || setuid(kOtherUser) != 0)) return 2;
               return check() ? 0 : 1;
           }) == 0;
}
