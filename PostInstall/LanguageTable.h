#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>

/// Returns the two-letter tag of a classic Mac OS language code, "en" for a language that the products do not
/// support. The string is a constant.
CFStringRef LanguageTag(std::int32_t languageCode);
