#include <Kelbase/common/common_string.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

namespace {

constexpr std::size_t maxLength = std::numeric_limits<unsigned int>::max();

std::size_t boundedLength(const char* s, std::size_t limit) {
    const void* const end = std::memchr(s, 0, limit);
    return end ? static_cast<std::size_t>(static_cast<const char*>(end) - s) : limit;
}

/// Bytes of the UTF-8 sequence that a lead byte announces, old forms of up to seven included.
std::size_t sequenceLength(unsigned char lead) {
    std::size_t length = 2;
    while (length < 7 && (lead & (0x80 >> length))) ++length;
    return length;
}

/// Overwrites a sequence that is cut off at the end with NUL bytes.
void blankCutSequence(std::string& text) {
    if (text.empty() || static_cast<unsigned char>(text.back()) < 0x80) return;
    std::size_t lead = text.size();
    do {
        if (lead == 0) return;
        --lead;
    } while ((static_cast<unsigned char>(text[lead]) & 0xC0) != 0xC0);
    if (lead + sequenceLength(static_cast<unsigned char>(text[lead])) <= text.size()) return;
    std::fill(text.begin() + static_cast<std::ptrdiff_t>(lead), text.end(), '\0');
}

} // namespace

String::String(std::string&& bytes) {
    if (bytes.size() > maxLength) throw std::length_error("String: 4 GiB or more");
    text = shared_ptr<std::string>::make(std::move(bytes));
}

String::String(const char* s) : String(s ? String(std::string(s)) : String()) {}

String::String(const char* s, unsigned int n)
    : String(s ? String(std::string(s, boundedLength(s, n))) : String()) {}

String::String(char c) : String(std::string(1, c)) {}

String& String::operator=(const char* s) { return *this = String(s); }

String String::GetPlatformLinefeed() { return String("\n"); }

std::string& String::OwnText() {
    if (!text) {
        text = shared_ptr<std::string>::make();
    } else if (text.use_count() > 1) {
        text = shared_ptr<std::string>::make(*text);
    }
    return *text;
}

String& String::operator+=(const String& r) {
    if (r.GetLength() == 0) return *this;
    if (GetLength() == 0) return *this = r;
    if (maxLength - GetLength() < r.GetLength()) throw std::length_error("String: 4 GiB or more");
    if (text.use_count() == 1) {
        text->append(*r.text);
        return *this;
    }
    std::string joined;
    joined.reserve(text->size() + r.text->size());
    joined.append(*text).append(*r.text);
    return *this = String(std::move(joined));
}

String& String::operator+=(char c) { return *this += String(c); }

String& String::detachAndExtend(unsigned int n) {
    if (n == maxLength) throw std::length_error("String: 4 GiB or more");
    const std::size_t length = GetLength();
    std::string& own = OwnText();
    if (n >= length) own.resize(std::size_t{n} + 1);
    return *this;
}

String& String::Resize(unsigned int n, bool keepWholeCharacters) {
    std::string resized;
    resized.reserve(n);
    if (text) resized.assign(*text, 0, n);
    resized.resize(n);
    if (keepWholeCharacters) blankCutSequence(resized);
    return *this = String(std::move(resized));
}

String& String::Truncate(unsigned int n) {
    if (n < GetLength()) Resize(n, true);
    return *this;
}

String operator+(const String& a, const String& b) {
    String sum(a);
    sum += b;
    return sum;
}

String operator+(const String& a, const char* b) { return a + String(b); }

bool operator==(const String& l, const String& r) {
    return l.Latin1() == r.Latin1() || std::strcmp(l.Latin1(), r.Latin1()) == 0;
}
bool operator<(const String& l, const String& r) { return std::strcmp(l.Latin1(), r.Latin1()) < 0; }
bool operator<=(const String& l, const String& r) { return std::strcmp(l.Latin1(), r.Latin1()) <= 0; }
bool operator==(const String& l, const char* r) { return r && std::strcmp(l.Latin1(), r) == 0; }
bool operator<(const String& l, const char* r) { return r && std::strcmp(l.Latin1(), r) < 0; }
bool operator<=(const String& l, const char* r) { return r && std::strcmp(l.Latin1(), r) <= 0; }
