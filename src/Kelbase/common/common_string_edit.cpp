#include <Kelbase/common/common_string.h>

#include <Kelbase/common/common_string_length.h>

#include <algorithm>
#include <utility>

namespace {

bool isSpace(char c) { return Char(c).IsSpace(); }

template <typename Map>
std::string mapped(std::string bytes, Map map) {
    std::transform(bytes.begin(), bytes.end(), bytes.begin(), map);
    return bytes;
}

/// Replaces every occurrence of `from`, which is not empty and occurs first at `hit`.
std::string replaced(std::string_view bytes, std::string_view from, std::string_view to, std::size_t hit) {
    std::string result;
    std::size_t copied = 0;
    for (; hit != bytes.npos; hit = bytes.find(from, copied)) {
        checkedLength(0ull + result.size() + (hit - copied) + to.size());
        result.append(bytes.substr(copied, hit - copied)).append(to);
        copied = hit + from.size();
    }
    checkedLength(0ull + result.size() + (bytes.size() - copied));
    result.append(bytes.substr(copied));
    return result;
}

} // namespace

// Slices

String String::Left(unsigned int n) const { return n >= GetLength() ? *this : String(Bytes().substr(0, n)); }

String String::Right(unsigned int n) const {
    return n >= GetLength() ? *this : String(Bytes().substr(GetLength() - n));
}

String String::Mid(unsigned int start, const checked_value<unsigned int>& n) const {
    if (start >= GetLength()) return {};
    const std::string_view slice = Bytes().substr(start, n.IsGiven() ? std::size_t{n} : std::string::npos);
    return slice.size() == GetLength() ? *this : String(slice);
}

// Editing in place

String& String::Insert(unsigned int pos, const String& s) {
    if (pos >= GetLength()) return *this += s;
    const std::string_view old = Bytes();
    const std::size_t total = checkedLength(0ull + old.size() + s.GetLength());
    if (IsSoleHolder()) {
        text->insert(pos, s.Bytes());
        return *this;
    }
    std::string longer;
    longer.reserve(total);
    longer.append(old.substr(0, pos)).append(s.Bytes()).append(old.substr(pos));
    return *this = String(std::move(longer));
}

String& String::Remove(unsigned int pos, const checked_value<unsigned int>& n) {
    const std::string_view old = Bytes();
    if (pos >= old.size() || (n.IsGiven() && n == 0)) return *this;
    const std::size_t rest = old.size() - pos;
    const std::size_t count = n.IsGiven() ? std::min<std::size_t>(n, rest) : rest;
    if (IsSoleHolder()) {
        text->erase(pos, count);
        return *this;
    }
    std::string shorter;
    shorter.reserve(old.size() - count);
    shorter.append(old.substr(0, pos)).append(old.substr(pos + count));
    return *this = String(std::move(shorter));
}

// Edited copies

String String::ReplaceChar(const Char& from, const Char& to) const {
    const char old = from, fresh = to;
    if (!Find(old).IsGiven()) return *this;
    return String(mapped(*text, [old, fresh](char c) { return c == old ? fresh : c; }));
}

String String::Replace(const String& from, const String& to) const {
    if (!from.GetLength()) return *this;
    const std::size_t hit = Bytes().find(from.Bytes());
    return hit == std::string::npos ? *this : String(replaced(Bytes(), from.Bytes(), to.Bytes(), hit));
}

String String::ToUpper() const {
    return text ? String(mapped(*text, [](char c) -> char { return Char(c).ToUpper(); })) : String();
}

String String::ToLower() const {
    return text ? String(mapped(*text, [](char c) -> char { return Char(c).ToLower(); })) : String();
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
    std::string words;
    words.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        if (isSpace(bytes[i])) {
            ++i;
            continue;
        }
        if (!words.empty()) words += ' ';
        for (; i < bytes.size() && !isSpace(bytes[i]); ++i) words += bytes[i];
    }
    String simplified(std::move(words));
    // Byte 0xA0 separates words also inside a UTF-8 sequence: the last one may have lost its tail.
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
    out = std::move(fields); // last, because this String may be one of its elements
}

String String::Join(const String& sep, const std::vector<String>& parts) {
    if (parts.empty()) return {};
    std::size_t total = parts[0].GetLength();
    for (std::size_t i = 1; i < parts.size(); ++i) {
        total = checkedLength(0ull + total + sep.GetLength() + parts[i].GetLength());
    }
    std::string joined;
    joined.reserve(total);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i) joined.append(sep.Bytes());
        joined.append(parts[i].Bytes());
    }
    return String(std::move(joined));
}
