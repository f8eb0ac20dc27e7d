#pragma once

#include <Kelbase/Util/Exception/FileIO.h>

#include <string>

#include <sys/wait.h>
#include <unistd.h>

/// What a call threw, as "LINE KIND ERRNO: MESSAGE"; empty when nothing. `source` and `path` must be its own.
template <typename Call>
std::string FailureOf(const char* source, const std::string& path, Call call) {
    try {
        call();
        return {};
    } catch (const Util::Exception::FileIO& failure) {
        const bool isFile = failure.GetFolderPath().IsEmpty();
        const String its = isFile ? failure.GetFilePath().ToString() : failure.GetFolderPath().ToString();
        const bool own = failure.GetFilename() == source && its == path.c_str();
        return std::to_string(failure.GetLineNumber()) + " " + std::to_string(failure.GetErrorKind()) + " " +
               std::to_string(failure.GetErrorNumber()) + ": " + failure.GetMessageText().Latin1() +
               (own ? "" : " in another place");
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
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}
