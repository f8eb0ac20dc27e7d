#pragma once

/// Gives the platform's other services access to the paths of URLs.

#include <CoreFoundation/CFURL.h>

#include <string>

namespace macplatform {

/// Returns the absolute POSIX path in UTF-8. Only the path "/" has a trailing "/". Reports a misuse and
/// aborts if the object is no URL.
const std::string& UrlPath(CFURLRef url);

} // namespace macplatform
