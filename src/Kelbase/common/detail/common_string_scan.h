#pragma once

/// @file
/// Declares searches and copies of bytes that have a vectorised implementation for x86 and a scalar
/// implementation for all other processors. Both implementations give the same results.

#include <cstddef>
#include <string_view>

namespace text_scan {

/// Returns the first position of `part` in `text`, or `npos`. `part` must not be empty.
std::size_t Find(std::string_view text, std::string_view part);
/// Returns the result of `Find` with "A"-"Z" equal to "a"-"z".
std::size_t FindFolded(std::string_view text, std::string_view part);

/// Returns whether the first `n` bytes are equal, with "A"-"Z" equal to "a"-"z". The comparison ends at a NUL
/// that both texts have at the same position.
bool EqualFolded(const char* a, const char* b, std::size_t n);

/// Writes the words of `text` to `out`, with one space between two words. If white space ends the text, a
/// space follows the last word. Returns the end of the written bytes. `out` must have space for `text.size()`
/// bytes. The bytes after the result are undefined.
char* WriteWords(std::string_view text, char* out);

/// Returns the position of the placeholder ("%" and one digit) with the lowest digit, or `npos`. If several
/// placeholders have this digit, returns the position of the first of them.
std::size_t LowestPlaceholder(std::string_view text);

/// Returns whether the byte is a separator of the names of a path.
inline bool IsSeparator(char c) { return c == '/' || c == '\\'; }

/// Returns the position of the last separator, or `npos`.
std::size_t LastSeparator(std::string_view text);

/// Copies the bytes before the first separator to `out` and returns their number. `out` must have space for
/// `text.size()` bytes. The bytes after the copied ones are undefined.
std::size_t CopyName(std::string_view text, char* out);

/// Returns whether the text contains a "\", two consecutive "/", or a "/" before "..". A path without these
/// sequences and without a trailing "/" is canonical except for its last "/".
bool HasDirtyPath(std::string_view text);

} // namespace text_scan
