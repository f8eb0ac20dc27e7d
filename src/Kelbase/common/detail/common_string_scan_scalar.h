#pragma once

/// @file
/// Defines the scalar implementations of the functions in common_string_scan.h. The vectorised
/// implementations call them for the last bytes of a text.

#include <Kelbase/common/common_char.h>
#include <Kelbase/common/detail/common_string_scan.h>

#include <cstddef>
#include <string_view>

namespace text_scan::scalar {

inline char Folded(char c) { return Char(c).ToLower(); }

template <bool fold>
bool StandsAt(const char* text, std::string_view part) {
    for (std::size_t i = 0; i < part.size(); ++i) {
        if (fold ? Folded(text[i]) != Folded(part[i]) : text[i] != part[i]) return false;
    }
    return true;
}

template <bool fold>
std::size_t Find(std::string_view text, std::string_view part, std::size_t start = 0) {
    for (std::size_t i = start; i + part.size() <= text.size(); ++i) {
        if (StandsAt<fold>(text.data() + i, part)) return i;
    }
    return text.npos;
}

inline bool EqualFolded(const char* a, const char* b, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        if (Folded(a[i]) != Folded(b[i])) return false;
        if (!a[i]) break;
    }
    return true;
}

/// `afterSpace` is true if the text follows white space or is the first one.
inline char* WriteWords(std::string_view text, char* out, bool afterSpace) {
    for (const char c : text) {
        const bool space = Char(c).IsSpace();
        *out = space ? ' ' : c; // the next byte overwrites a byte that is not kept
        out += !(space && afterSpace);
        afterSpace = space;
    }
    return out;
}

inline std::size_t LowestPlaceholder(std::string_view text) {
    std::size_t best = text.npos;
    char above = '9' + 1;
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] != '%' || text[i + 1] < '0' || text[i + 1] >= above) continue;
        best = i;
        above = text[i + 1];
    }
    return best;
}

inline std::size_t LastSeparator(std::string_view text) {
    std::size_t n = text.size();
    while (n > 0 && !IsSeparator(text[n - 1])) --n;
    return n - 1;
}

inline std::size_t CopyName(std::string_view text, char* out) {
    std::size_t n = 0;
    for (; n < text.size() && !IsSeparator(text[n]); ++n) out[n] = text[n];
    return n;
}

inline bool HasDirtyPath(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\') return true;
        const std::string_view next = text.substr(i + 1, 2);
        if (text[i] == '/' && (next.substr(0, 1) == "/" || next == "..")) return true;
    }
    return false;
}

} // namespace text_scan::scalar
