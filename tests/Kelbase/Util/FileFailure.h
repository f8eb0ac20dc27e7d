#pragma once

#include <Kelbase/Util/Exception/FileIO.h>

#include <string>

#include <sys/wait.h>
#include <unistd.h>

/// What a call threw, as "FILE:LINE kind KIND errno NUMBER: MESSAGE (PATH)"; empty when nothing.
template <typename Call>
std::string FailureOf(Call call) {
    try {
        call();
        return {};
    } catch (const Util::Exception::FileIO& failure) {
        const String path = failure.GetFolderPath().IsEmpty() ? failure.GetFilePath().ToString()
                                                              : failure.GetFolderPath().ToString();
        return std::string(failure.GetFilename().Latin1()) + ":" + std::to_string(failure.GetLineNumber()) +
               " kind " + std::to_string(failure.GetErrorKind()) + " errno " +
               std::to_string(failure.GetErrorNumber()) + ": " + failure.GetMessageText().Latin1() + " (" +
               path.Latin1() + ")";
    }
}

/// Whether the check holds in a child process of a user without privileges, whom permissions bind.
template <typename Check>
bool HoldsForAnyUser(Check check) {
    const pid_t child = fork();
    if (child == 0) {
        const bool bound = geteuid() != 0 || setuid(65534) == 0;
        _exit(bound && check() ? 0 : 1);
    }
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
