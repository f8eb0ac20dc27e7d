#include <Kelbase/common/detail/common_string_sort.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

/// A text with a few of its bytes as a key. Most comparisons need only the key.
struct Keyed {
    std::uint64_t key;
    String text;

    bool operator<(const Keyed& other) const {
        return key != other.key ? key < other.key : text < other.text;
    }
};

/// Returns the length of the longest common prefix of all texts.
std::size_t commonPrefix(const std::vector<String>& texts) {
    const char* const first = texts.front().Latin1();
    std::size_t length = std::strlen(first);
    for (const String& text : texts) {
        const char* const s = text.Latin1();
        length = static_cast<std::size_t>(std::mismatch(first, first + length, s).first - first);
    }
    return length;
}

/// Returns the eight bytes from `start` on, at most up to the NUL, as a number that sorts as the bytes do.
std::uint64_t keyOf(const char* s, std::size_t start) {
    std::uint64_t key = 0;
    const char* p = s + start;
    for (int shift = 56; shift >= 0 && *p; shift -= 8, ++p)
        key |= std::uint64_t{static_cast<unsigned char>(*p)} << shift;
    return key;
}

} // namespace

void SortTexts(std::vector<String>& texts) {
    if (texts.size() < 2) return;
    const std::size_t prefix = commonPrefix(texts);
    std::vector<Keyed> keyed;
    keyed.reserve(texts.size());
    for (String& text : texts) keyed.push_back({keyOf(text.Latin1(), prefix), std::move(text)});
    std::sort(keyed.begin(), keyed.end());
    std::transform(keyed.begin(), keyed.end(), texts.begin(), [](Keyed& k) { return std::move(k.text); });
}
