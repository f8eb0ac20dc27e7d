#include <Kelbase/common/common_string.h>

#include <cstring>

namespace {

char folded(char c, bool caseSensitive) { return caseSensitive ? Char(c) : Char(c).ToLower(); }

/// As strstr, without regard to the case of ASCII letters; `s` and `wanted` end with a NUL.
const char* findFolded(const char* s, const char* wanted) {
    const std::size_t length = std::strlen(wanted);
    for (const char* const end = s + std::strlen(s); length <= static_cast<std::size_t>(end - s); ++s) {
        std::size_t same = 0;
        while (same < length && folded(s[same], false) == folded(wanted[same], false)) ++same;
        if (same == length) return s;
    }
    return nullptr;
}

bool sameText(const String& l, const String& r, bool caseSensitive) {
    return caseSensitive ? l == r : l.ToLower() == r.ToLower();
}

} // namespace

checked_value<unsigned int> String::Find(char c, unsigned int start, bool caseSensitive) const {
    const unsigned int length = GetLength();
    for (unsigned int i = start; i < length; ++i) {
        if (folded((*text)[i], caseSensitive) == folded(c, caseSensitive)) return i;
    }
    return {};
}

checked_value<unsigned int> String::Find(const char* s, unsigned int start, bool caseSensitive) const {
    if (!s || start >= GetLength()) return {};
    const char* const first = Latin1();
    const char* const found = caseSensitive ? std::strstr(first + start, s) : findFolded(first + start, s);
    if (!found) return {};
    return static_cast<unsigned int>(found - first);
}

checked_value<unsigned int> String::FindRev(char c, const checked_value<unsigned int>& start,
                                            bool caseSensitive) const {
    const unsigned int length = GetLength();
    if (length == 0) return {};
    unsigned int i = start.IsGiven() ? static_cast<unsigned int>(start) : length - 1;
    if (i >= length) return {};
    for (++i; i > 0; --i) {
        if (folded((*text)[i - 1], caseSensitive) == folded(c, caseSensitive)) return i - 1;
    }
    return {};
}

bool String::BeginsWith(const String& p, bool caseSensitive) const {
    return p.GetLength() <= GetLength() && sameText(Left(p.GetLength()), p, caseSensitive);
}

bool String::EndsWith(const String& p, bool caseSensitive) const {
    return p.GetLength() <= GetLength() && sameText(Right(p.GetLength()), p, caseSensitive);
}
