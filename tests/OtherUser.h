#pragma once

#include <cstdlib>
#include <functional>
#include <sys/wait.h>
#include <unistd.h>

/// A user who owns nothing: tests may run as root, to whom permission bits mean nothing.
constexpr uid_t otherUser = 65534;

/// Runs the check in a child process of the other user (of this one, when it is not root). 0 when it holds, 1
/// when not, and else a number that says where the child ended.
inline int AsOtherUser(const std::function<bool()>& check) {
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && (setgid(otherUser) != 0 || setuid(otherUser) != 0)) _exit(2);
        _exit(check() ? 0 : 1);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return 3;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}
