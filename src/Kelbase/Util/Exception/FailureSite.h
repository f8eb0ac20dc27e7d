#pragma once

#include <Kelbase/Util/Exception/FileIO.h>

namespace Util::Exception {

/// A place that throws `FileIO`. Its line is a fixed number by which readers of the failure's text know the
/// place; it stays when the code moves.
struct FailureSite {
    const char* file;
    int line;
    FileIO::ErrorKind kind;
    const char* message; ///< With a placeholder for each argument of `Throw`.
};

/// The site's failure about a file or a folder.
template <typename Path, typename... Arguments>
FileIO Failure(const FailureSite& site, const Path& path, int errorNumber, Arguments... arguments) {
    String message(site.message);
    ((message = message.Arg(arguments)), ...);
    FileIO failure(message, path, site.kind, errorNumber);
    failure.SetLocation(site.file, site.line);
    return failure;
}

/// Throws it. A function of its own, so that `errno` as an argument is read before anything is allocated.
template <typename Path, typename... Arguments>
[[noreturn]] void Throw(const FailureSite& site, const Path& path, int errorNumber, Arguments... arguments) {
    throw Failure(site, path, errorNumber, arguments...);
}

} // namespace Util::Exception
