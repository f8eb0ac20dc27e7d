#pragma once

/// URLs seen from the platform's other services.

#include <CoreFoundation/CFURL.h>

#include <string>

namespace macplatform {

/// The absolute POSIX path, in UTF-8, without a trailing "/" ("/" itself has it). Misuse of what is no URL.
const std::string& UrlPath(CFURLRef url);

} // namespace macplatform
