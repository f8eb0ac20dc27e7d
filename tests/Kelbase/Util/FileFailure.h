#pragma once

#include <Kelbase/Util/Exception/FileIO.h>

#include <string>

/// Returns the FileIO exception of a call as "LINE KIND ERRNO: MESSAGE". Returns an empty string if the call
/// throws nothing. Appends " in another place" if the exception names another source or path.
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
