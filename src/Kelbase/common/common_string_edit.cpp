#include <Kelbase/common/common_string.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace {

bool isSpace(char c) { return Char(c).IsSpace(); }

template <typename Edit>
std::string edited(std::string text, Edit edit) {
    std::transform(text.begin(), text.end(), text.begin(), edit);
    return text;
}

} // namespace

String String::Left(unsigned int n) const {
    return n >= GetLength() ? *this : String(std::string(*text, 0, n));
}

String String::Right(unsigned int n) const {
    return n >= GetLength() ? *this : String(std::string(*text, GetLength() - n));
}

String String::Mid(unsigned int start, const checked_value<unsigned int>& n) const {
    if (start >= GetLength()) return {};
    return String(std::string(*text, start, n.IsGiven() ? std::size_t{n} : std::string::npos));
}

String& String::Insert(unsigned int pos, const String& s) { return *this = Left(pos) + s + Mid(pos); }

String& String::Remove(unsigned int pos, const checked_value<unsigned int>& n) {
    const unsigned int length = GetLength();
    if (pos >= length || (n.IsGiven() && n == 0u)) return *this;
    if (!n.IsGiven() || length - pos <= n) return *this = Left(pos);
    return *this = Left(pos) + Right(length - pos - n);
}

String String::ReplaceChar(const Char& from, const Char& to) const {
    if (GetLength() == 0) return *this;
    const char old = from, fresh = to;
    return String(edited(*text, [old, fresh](char c) { return c == old ? fresh : c; }));
}

String String::Replace(const String& from, const String& to) const {
    if (GetLength() == 0 || from.GetLength() == 0) return *this;
    std::string replaced;
    std::size_t start = 0;
    for (std::size_t hit; (hit = text->find(*from.text, start)) != std::string::npos;
         start = hit + from.text->size()) {
        replaced.append(*text, start, hit - start);
        if (to.text) replaced.append(*to.text);
    }
    return start == 0 ? *this : String(std::move(replaced.append(*text, start)));
}

String String::ToUpper() const {
    return text ? String(edited(*text, [](char c) -> char { return Char(c).ToUpper(); })) : String();
}

String String::ToLower() const {
    return text ? String(edited(*text, [](char c) -> char { return Char(c).ToLower(); })) : String();
}

String String::StripWhiteSpace() const {
    if (GetLength() == 0 || (!isSpace(text->front()) && !isSpace(text->back()))) return *this;
    const auto first = std::find_if_not(text->begin(), text->end(), isSpace);
    const auto last = std::find_if_not(text->rbegin(), std::make_reverse_iterator(first), isSpace).base();
    return String(std::string(first, last));
}

String String::SimplifyWhiteSpace() const {
    if (GetLength() == 0) return *this;
    std::string simple;
    simple.reserve(text->size());
    for (auto at = text->begin(); at != text->end();) {
        at = std::find_if_not(at, text->end(), isSpace);
        const auto word = at;
        at = std::find_if(at, text->end(), isSpace);
        simple.append(word, at);
        if (at != text->end()) simple += ' ';
    }
    if (!simple.empty() && simple.back() == ' ') simple.pop_back();
    String result(std::move(simple));
    result.Resize(result.GetLength(), true);
    return result;
}

void String::Split(char sep, std::vector<String>& out) const {
    const String whole(*this); // `out` may hold this very String
    out.clear();
    unsigned int start = 0;
    for (auto hit = whole.Find(sep); hit.IsGiven(); hit = whole.Find(sep, start)) {
        out.push_back(whole.Mid(start, hit - start));
        start = hit + 1;
    }
    out.push_back(start == 0 ? whole : whole.Mid(start));
}

String String::Join(const String& sep, const std::vector<String>& parts) {
    String joined;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) joined += sep;
        joined += parts[i];
    }
    return joined;
}
