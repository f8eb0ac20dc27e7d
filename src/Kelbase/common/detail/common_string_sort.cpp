#include <Kelbase/common/detail/common_string_sort.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

/// A text behind a few of its bytes: most comparisons need not go and look at the text.
struct Keyed {
    std::uint64_t key;
    String text;

    bool operator<(const Keyed& other) const {
        return key != other.key ? key < other.key : text < other.text;
    }
};

/// The length of what all texts begin with.
std::size_t commonPrefix(const std::vector<String>& texts) {
    const char* const first = texts.front().Latin1();
    std::size_t length = std::strlen(first);
    for (const String& text : texts) {
        const char* const s = text.Latin1();
        length = static_cast<std::size_t>(std::mismatch(first, first + length, s).first - first);
    }
    return length;
}

/// The eight bytes from `start` on, or those before the NUL, as a number that sorts as they do.
std::uint64_t keyOf(const char* s, std::size_t start) {
    std::uint64_t key = 0;
    const char* p = s + start;
    for (int shift = 56; shift >= 0 && *p; shift -= 8, ++p)
        key |= std::uint64_t{static_cast<unsigned char>(*p)} << shift;
    return key;
}

} // namespace

void sortTexts(std::vector<String>& texts) {
    if (texts.size() < 2) return;
    const std::size_t prefix = commonPrefix(texts);
    std::vector<Keyed> keyed;
    keyed.reserve(texts.size());
    for (String& text : texts) keyed.push_back({keyOf(text.Latin1(), prefix), std::move(text)});
    std::sort(keyed.begin(), keyed.end());
    std::transform(keyed.begin(), keyed.end(), texts.begin(), [](Keyed& k) { return std::move(k.text); });
}
