#pragma once

/// Searches and clean-ups of plain bytes, many at a time: in one form for processors of the x86 family, in a
/// plain one for all others. Both give the same results.

#include <cstddef>
#include <string_view>

namespace text_scan {

/// First place of `part` in `text`; `npos` when there is none. `part` is not empty.
std::size_t Find(std::string_view text, std::string_view part);
/// The same, "A"-"Z" read as "a"-"z" in both.
std::size_t FindFolded(std::string_view text, std::string_view part);

/// Whether `n` bytes are equal, "A"-"Z" read as "a"-"z", or all those before a NUL that both have.
bool EqualFolded(const char* a, const char* b, std::size_t n);

/// Writes the words of `text` to `out`, a blank between two of them and, where white space ends the text,
/// behind the last. Answers the end of what it wrote; the bytes from there to `out + text.size()` are
/// undefined.
char* WriteWords(std::string_view text, char* out);

/// Place of the "%" that the lowest digit follows, the first of equal ones; `npos` when there is none.
std::size_t LowestPlaceholder(std::string_view text);

/// Names of a path end here.
inline bool IsSeparator(char c) { return c == '/' || c == '\\'; }

/// Place of the last separator; `npos` when there is none.
std::size_t LastSeparator(std::string_view text);

/// Copies what stands before the first separator to `out` and answers how many bytes; those of `out` from
/// there to `text.size()` are undefined.
std::size_t CopyName(std::string_view text, char* out);

/// Whether the text has a "\", a doubled "/", or a "/" before "..".
bool HasDirtyPath(std::string_view text);

} // namespace text_scan
