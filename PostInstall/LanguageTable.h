#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>

/// Returns the two-letter tag of a classic Mac OS language code. Returns "en" for a language that the
/// products do not support. The string is a constant, which the caller must not release.
CFStringRef LanguageTag(std::int32_t languageCode);
