#pragma once

/// @file
/// Declares conversions between the library's strings and bytes that may include NULs.

#include <Kelbase/common/common_string.h>

#include <string>
#include <string_view>

/// Returns all bytes of a string, also those after a NUL.
inline std::string BytesOf(const String& text) { return {text.Latin1(), text.GetLength()}; }

/// Returns a string of these bytes, NULs included.
inline String TextOf(std::string_view bytes) {
    String text;
    for (const char c : bytes) text += c;
    return text;
}
