#pragma once

#include <Kelbase/common/common_string.h>

#include <string>
#include <string_view>

/// All bytes of a text, also those behind a NUL.
inline std::string BytesOf(const String& text) { return {text.Latin1(), text.GetLength()}; }

/// A text of these bytes, also where there are NULs among them.
inline String TextOf(std::string_view bytes) {
    String text;
    for (const char c : bytes) text += c;
    return text;
}
