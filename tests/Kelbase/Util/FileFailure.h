#pragma once

#include <Kelbase/Util/Exception/FileIO.h>

#include <string>

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
