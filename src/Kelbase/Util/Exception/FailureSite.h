#pragma once

/// @file
/// The places in the sources that throw `FileIO`.

#include <Kelbase/Util/Exception/FileIO.h>

namespace Util::Exception {

/// A place that throws `FileIO`. Its line is a fixed number that identifies the place in the failure's text.
/// The number stays the same when the code moves.
struct FailureSite {
    const char* file;
    int line;
    FileIO::ErrorKind kind;
    const char* message; ///< Has a placeholder for each argument of `Throw`.
};

/// Returns the exception of a site for a file or a folder.
template <typename Path, typename... Arguments>
FileIO Failure(const FailureSite& site, const Path& path, int errorNumber, Arguments... arguments) {
    String message(site.message);
    ((message = message.Arg(arguments)), ...);
    FileIO failure(message, path, site.kind, errorNumber);
    failure.SetLocation(site.file, site.line);
    return failure;
}

/// Throws the exception of a site. This is a separate function, so that an argument `errno` is read before
/// anything is allocated.
template <typename Path, typename... Arguments>
[[noreturn]] void Throw(const FailureSite& site, const Path& path, int errorNumber, Arguments... arguments) {
    throw Failure(site, path, errorNumber, arguments...);
}

} // namespace Util::Exception
