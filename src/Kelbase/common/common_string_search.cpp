#include <Kelbase/common/common_string.h>

#include <Kelbase/common/detail/common_string_scan.h>

#include <cstddef>

namespace {

using Position = checked_value<unsigned int>;

Position positionAt(std::size_t i) { return Position(static_cast<unsigned int>(i)); }

char folded(char c) { return Char(c).ToLower(); }

/// Returns whether `n` bytes are equal. The comparison ends at a NUL in both texts.
bool equalUpToNul(const char* a, const char* b, std::size_t n, bool caseSensitive) {
    return caseSensitive ? std::strncmp(a, b, n) == 0 : text_scan::EqualFolded(a, b, n);
}

} // namespace

checked_value<unsigned int> String::Find(char c, unsigned int start, bool caseSensitive) const {
    const std::string_view bytes = Bytes();
    if (start >= bytes.size()) return {};
    if (caseSensitive) {
        const std::size_t i = bytes.find(c, start);
        return i == bytes.npos ? Position() : positionAt(i);
    }
    for (std::size_t i = start; i < bytes.size(); ++i) {
        if (folded(bytes[i]) == folded(c)) return positionAt(i);
    }
    return {};
}

checked_value<unsigned int> String::FindRev(char c, const checked_value<unsigned int>& start,
                                            bool caseSensitive) const {
    const std::string_view bytes = Bytes();
    if (bytes.empty() || (start.IsGiven() && start >= bytes.size())) return {};
    const std::size_t end = start.IsGiven() ? start + std::size_t{1} : bytes.size();
    for (std::size_t i = end; i-- > 0;) {
        if (bytes[i] == c || (!caseSensitive && folded(bytes[i]) == folded(c))) return positionAt(i);
    }
    return {};
}

const char* String::FindFolded(const char* s, const char* part) {
    if (!*part) return s;
    const std::size_t place = text_scan::FindFolded(s, part);
    return place == std::string_view::npos ? nullptr : s + place;
}

bool String::BeginsWith(const String& p, bool caseSensitive) const {
    const unsigned int n = p.GetLength();
    return n <= GetLength() && equalUpToNul(Latin1(), p.Latin1(), n, caseSensitive);
}

bool String::EndsWith(const String& p, bool caseSensitive) const {
    const unsigned int n = p.GetLength();
    return n <= GetLength() && equalUpToNul(Latin1() + (GetLength() - n), p.Latin1(), n, caseSensitive);
}
