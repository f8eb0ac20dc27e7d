#include <Kelbase/common/common_string.h>

#include <Kelbase/common/common_string_length.h>

#include <stdexcept>
#include <utility>

namespace {

std::size_t lengthUpToNul(const char* s, unsigned int limit) {
    const void* end = std::memchr(s, 0, limit);
    return end ? static_cast<std::size_t>(static_cast<const char*>(end) - s) : limit;
}

/// Bytes that a UTF-8 sequence with this lead byte has; the forms of five to seven bytes are counted too.
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    if (lead < 0xF8) return 4;
    if (lead < 0xFC) return 5;
    return lead < 0xFE ? 6 : 7;
}

/// Makes a sequence that the end of the text cuts off NUL bytes.
void blankCutSequence(std::string& bytes) {
    if (bytes.empty() || static_cast<unsigned char>(bytes.back()) < 0x80) return;
    for (std::size_t i = bytes.size(); i-- > 0;) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (byte < 0xC0) continue;
        const std::size_t present = bytes.size() - i;
        if (sequenceLength(byte) > present) bytes.replace(i, present, present, '\0');
        return;
    }
}

} // namespace

std::size_t checkedLength(unsigned long long n) {
    if (n > 0xFFFFFFFFu) throw std::length_error("String: 4 GiB or more");
    return static_cast<std::size_t>(n);
}

String::String(std::string&& bytes) {
    checkedLength(bytes.size());
    text = shared_ptr<std::string>::make(std::move(bytes));
}

String::String(std::string_view bytes) : text(shared_ptr<std::string>::make(bytes)) {}

String::String(const char* s) {
    if (s) text = shared_ptr<std::string>::make(s, checkedLength(std::strlen(s)));
}

String::String(const char* s, unsigned int n) {
    if (s) text = shared_ptr<std::string>::make(s, lengthUpToNul(s, n));
}

String::String(char c) : text(shared_ptr<std::string>::make(1u, c)) {}

String& String::operator=(const char* s) { return *this = String(s); }

String String::GetPlatformLinefeed() { return String('\n'); }

String& String::operator+=(const String& r) {
    if (r.Bytes().empty()) return *this;
    if (Bytes().empty()) return *this = r;
    const std::size_t total = checkedLength(0ull + text->size() + r.text->size());
    if (IsSoleHolder()) {
        text->append(r.Bytes());
        return *this;
    }
    std::string joined;
    joined.reserve(total);
    joined.append(*text).append(*r.text);
    return *this = String(std::move(joined));
}

String& String::operator+=(char c) {
    if (!IsSoleHolder()) return *this += String(c);
    checkedLength(text->size() + 1ull);
    text->push_back(c);
    return *this;
}

String operator+(String a, const String& b) {
    a += b;
    return a;
}

String operator+(String a, const char* b) {
    a += String(b);
    return a;
}

String& String::detachAndExtend(unsigned int n) {
    const std::size_t length = n < GetLength() ? GetLength() : checkedLength(n + 1ull);
    if (IsSoleHolder()) {
        text->resize(length);
        return *this;
    }
    std::string extended;
    extended.reserve(length);
    extended.append(Bytes()).resize(length);
    return *this = String(std::move(extended));
}

String& String::Resize(unsigned int n, bool keepWholeCharacters) {
    if (!IsSoleHolder()) {
        std::string resized;
        resized.reserve(n);
        resized.append(Bytes().substr(0, n)).resize(n);
        *this = String(std::move(resized));
    }
    text->resize(n);
    if (keepWholeCharacters) blankCutSequence(*text);
    return *this;
}

String& String::Truncate(unsigned int n) { return n < GetLength() ? Resize(n, true) : *this; }
