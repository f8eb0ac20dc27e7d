#pragma once

/// @file
/// Searching and cleaning of bytes. There is a vectorised implementation for x86 and a scalar one for all
/// other processors. Both give the same results.

#include <cstddef>
#include <string_view>

namespace text_scan {

/// Returns the first position of `part` in `text`, or `npos`. `part` must not be empty.
std::size_t Find(std::string_view text, std::string_view part);
/// Returns the same with "A"-"Z" equal to "a"-"z".
std::size_t FindFolded(std::string_view text, std::string_view part);

/// Returns whether `n` bytes are equal, with "A"-"Z" equal to "a"-"z". The comparison ends at a NUL in both
/// texts.
bool EqualFolded(const char* a, const char* b, std::size_t n);

/// Writes the words of `text` to `out`, with one blank between two words. If white space ends the text, a
/// blank follows the last word. Returns the end of the written bytes. The bytes from there to `out +
/// text.size()` are undefined.
char* WriteWords(std::string_view text, char* out);

/// Returns the position of the "%" before the lowest digit, the first one of equal digits, or `npos`.
std::size_t LowestPlaceholder(std::string_view text);

/// Returns whether the byte separates the names of a path.
inline bool IsSeparator(char c) { return c == '/' || c == '\\'; }

/// Returns the position of the last separator, or `npos`.
std::size_t LastSeparator(std::string_view text);

/// Copies the bytes before the first separator to `out` and returns their number. The bytes of `out` from
/// there to `text.size()` are undefined.
std::size_t CopyName(std::string_view text, char* out);

/// Returns whether the text has a "\", a doubled "/", or a "/" before "..".
bool HasDirtyPath(std::string_view text);

} // namespace text_scan
