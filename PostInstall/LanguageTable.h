#pragma once

/// @file
/// Languages of the products.

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>

/// The two-letter tag of a classic Mac OS language code; "en" for every language that the products do not
/// speak. Lent for ever.
CFStringRef LanguageTag(std::int32_t languageCode);
