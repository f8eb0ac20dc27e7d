#pragma once

/// @file
/// Classifies the ASCII characters of XML and of the strings in property lists.

#include <string_view>

namespace macplatform {

inline bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }
inline bool IsLetter(char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }

/// Returns the text without white space at both ends.
inline std::string_view Stripped(std::string_view text) {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
    return text;
}

} // namespace macplatform
