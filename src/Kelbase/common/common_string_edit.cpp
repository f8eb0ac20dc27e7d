#include <Kelbase/common/common_string.h>

#include <Kelbase/common/detail/common_string_builder.h>
#include <Kelbase/common/detail/common_string_length.h>
#include <Kelbase/common/detail/common_string_scan.h>

#include <algorithm>
#include <utility>

namespace {

bool isSpace(char c) { return Char(c).IsSpace(); }

/// Returns the positions of `part` from left to right, without overlaps.
std::vector<std::size_t> placesOf(std::string_view part, std::string_view text) {
    std::vector<std::size_t> places;
    for (std::size_t start = 0;; start = places.back() + part.size()) {
        const std::size_t next = text_scan::Find(text.substr(start), part);
        if (next == text.npos) return places;
        places.push_back(start + next);
    }
}

/// Returns the text with `map` applied to every byte.
template <typename Map>
String mapped(std::string_view bytes, Map map) {
    if (bytes.empty()) return {};
    StringBuilder result(bytes.size());
    return result.FinishAt(std::transform(bytes.begin(), bytes.end(), result.End(), map));
}

} // namespace

// Slices

String String::Left(unsigned int n) const { return n >= GetLength() ? *this : String(Bytes().substr(0, n)); }

String String::Right(unsigned int n) const {
    return n >= GetLength() ? *this : String(Bytes().substr(GetLength() - n));
}

String String::Mid(unsigned int start, const checked_value<unsigned int>& n) const {
    if (start >= GetLength()) return {};
    const std::string_view slice =
        Bytes().substr(start, n.IsGiven() ? std::size_t{n} : std::string_view::npos);
    return slice.size() == GetLength() ? *this : String(slice);
}

// Editing in place

String& String::Insert(unsigned int pos, const String& s) {
    if (pos >= GetLength()) return *this += s;
    const std::string_view old = Bytes();
    const unsigned long long total = 0ull + old.size() + s.GetLength();
    StringBuilder longer(total);
    return *this = longer.Add(old.substr(0, pos)).Add(s.Bytes()).Add(old.substr(pos)).Finish();
}

String& String::Remove(unsigned int pos, const checked_value<unsigned int>& n) {
    const std::string_view old = Bytes();
    if (pos >= old.size() || (n.IsGiven() && n == 0)) return *this;
    const std::size_t rest = old.size() - pos;
    const std::size_t count = n.IsGiven() ? std::min<std::size_t>(n, rest) : rest;
    if (IsSoleHolder()) {
        std::memmove(block->Bytes() + pos, old.data() + pos + count, rest - count + 1); // and the NUL
        block->length -= static_cast<unsigned int>(count);
        return *this;
    }
    StringBuilder shorter(old.size() - count);
    return *this = shorter.Add(old.substr(0, pos)).Add(old.substr(pos + count)).Finish();
}

// Edited copies

String String::ReplaceChar(const Char& from, const Char& to) const {
    const char old = from, fresh = to;
    if (!Find(old).IsGiven()) return *this;
    return mapped(Bytes(), [old, fresh](char c) { return c == old ? fresh : c; });
}

String String::Replace(const String& from, const String& to) const {
    const std::string_view bytes = Bytes();
    if (!from.GetLength()) return *this;
    const std::vector<std::size_t> hits = placesOf(from.Bytes(), bytes);
    if (hits.empty()) return *this;

    // The sum cannot overflow: there are fewer than 2^32 hits, and `to` has fewer than 2^32 bytes.
    StringBuilder result(bytes.size() - 0ull - hits.size() * from.GetLength() +
                         1ull * hits.size() * to.GetLength());
    std::size_t copied = 0;
    for (const std::size_t hit : hits) {
        result.Add(bytes.substr(copied, hit - copied)).Add(to.Bytes());
        copied = hit + from.GetLength();
    }
    return result.Add(bytes.substr(copied)).Finish();
}

String String::ToUpper() const {
    return mapped(Bytes(), [](char c) -> char { return Char(c).ToUpper(); });
}

String String::ToLower() const {
    return mapped(Bytes(), [](char c) -> char { return Char(c).ToLower(); });
}

String String::StripWhiteSpace() const {
    std::string_view bytes = Bytes();
    while (!bytes.empty() && isSpace(bytes.front())) bytes.remove_prefix(1);
    while (!bytes.empty() && isSpace(bytes.back())) bytes.remove_suffix(1);
    return bytes.size() == GetLength() ? *this : String(bytes);
}

String String::SimplifyWhiteSpace() const {
    const std::string_view bytes = Bytes();
    if (bytes.empty()) return *this;
    StringBuilder words(bytes.size());
    char* end = text_scan::WriteWords(bytes, words.End());
    if (end > words.End() && end[-1] == ' ') --end;
    String simplified = words.FinishAt(end);
    // The byte 0xA0 separates words inside a UTF-8 sequence too, so the last sequence may be cut off.
    return simplified.Resize(simplified.GetLength(), true);
}

// Lists

void String::Split(char sep, std::vector<String>& out) const {
    const std::string_view bytes = Bytes();
    std::vector<String> fields;
    fields.reserve(1 + static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), sep)));
    unsigned int start = 0;
    for (auto hit = Find(sep); hit.IsGiven(); hit = Find(sep, start)) {
        fields.push_back(String(bytes.substr(start, hit - start)));
        start = hit + 1;
    }
    fields.push_back(Mid(start));
    out = std::move(fields); // assigned last, because this String may be an element of `out`
}

String String::Join(const String& sep, const std::vector<String>& parts) {
    if (parts.empty()) return {};
    std::size_t total = 0;
    for (const String& part : parts) total = CheckedLength(0ull + total + sep.GetLength() + part.GetLength());
    StringBuilder joined(total);
    for (const String& part : parts) {
        if (&part != &parts.front()) joined.Add(sep.Bytes());
        joined.Add(part.Bytes());
    }
    return joined.Finish();
}
