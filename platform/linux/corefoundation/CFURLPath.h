#pragma once

/// Declares a function that returns the path of a URL, for other sources of the platform.

#include <CoreFoundation/CFURL.h>

#include <string>

namespace macplatform {

/// Returns the absolute POSIX path in UTF-8. Only the path "/" has a trailing "/". The result is valid as
/// long as the URL exists. Calls `Misuse` with the name of the calling function if the object is not a URL.
const std::string& UrlPath(CFURLRef url, const char* function);

} // namespace macplatform
