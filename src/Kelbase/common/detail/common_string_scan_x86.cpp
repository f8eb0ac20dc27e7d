#include <Kelbase/common/detail/common_string_scan.h>

#include <Kelbase/common/detail/common_string_scan_scalar.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <type_traits>

#include <cpuid.h>
#include <emmintrin.h>
#include <tmmintrin.h>

// Processes sixteen bytes at a time, and the last ones by the scalar implementation. A mask has one bit for
// each of the sixteen bytes.

namespace text_scan {

namespace {

constexpr std::size_t kWidth = 16;

__m128i load(const char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
__m128i every(char c) { return _mm_set1_epi8(c); }
__m128i is(__m128i v, char c) { return _mm_cmpeq_epi8(v, every(c)); }
unsigned int maskOf(__m128i lanes) { return static_cast<unsigned int>(_mm_movemask_epi8(lanes)); }
std::size_t firstOf(unsigned int mask) { return static_cast<std::size_t>(__builtin_ctz(mask)); }

std::size_t lastOf(unsigned int mask) { return static_cast<std::size_t>(31 - __builtin_clz(mask)); }
unsigned int separators(__m128i v) { return maskOf(_mm_or_si128(is(v, '/'), is(v, '\\'))); }

/// Marks the bytes from `first` to `first` + `count` - 1 as unsigned numbers.
__m128i isAmong(__m128i v, char first, int count) {
    const __m128i moved = _mm_add_epi8(v, every(static_cast<char>(SCHAR_MIN - first)));
    return _mm_cmplt_epi8(moved, every(static_cast<char>(SCHAR_MIN + count)));
}

__m128i folded(__m128i v) { return _mm_or_si128(v, _mm_and_si128(isAmong(v, 'A', 26), every(0x20))); }

/// Returns whether sixteen bytes are equal, with "A"-"Z" equal to "a"-"z", up to a NUL in both. Sets `ended`
/// if a NUL or a difference has decided the comparison.
bool equalFolded(__m128i a, __m128i b, bool& ended) {
    const __m128i lanes = folded(a);
    const unsigned int equal = maskOf(_mm_cmpeq_epi8(lanes, folded(b)));
    const unsigned int stops = (equal ^ 0xFFFF) | maskOf(is(lanes, '\0'));
    ended = stops != 0;
    return !ended || (equal >> firstOf(stops) & 1);
}

/// Loads the first eight and the last eight of `n` bytes. `n` is 8 to 16; overlapping bytes are loaded twice.
__m128i loadEnds(const char* p, std::size_t n) {
    return _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                              _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + n - kWidth / 2)));
}

/// Finds a byte; a letter in both cases.
class EitherCase {
public:
    explicit EitherCase(char c) : lower(every(Char(c).ToLower())), upper(every(Char(c).ToUpper())) {}
    __m128i In(__m128i v) const { return _mm_or_si128(_mm_cmpeq_epi8(v, lower), _mm_cmpeq_epi8(v, upper)); }

private:
    __m128i lower, upper;
};
/// Finds a byte.
class OneCase {
public:
    explicit OneCase(char c) : lanes(every(c)) {}
    __m128i In(__m128i v) const { return _mm_cmpeq_epi8(v, lanes); }

private:
    __m128i lanes;
};

/// Searches for the first and the last byte of the part at once, and compares the rest only where both match.
template <bool fold>
class Finder {
public:
    explicit Finder(std::string_view p) : part(p), first(p.front()), last(p.back()) {}

    std::size_t In(std::string_view text) const {
        if (text.size() < part.size() + kWidth) return scalar::Find<fold>(text, part);
        const std::size_t lastBlock = text.size() - part.size() + 1 - kWidth;
        for (std::size_t i = 0; i < lastBlock; i += kWidth) {
            const std::size_t hit = InBlock(text.data() + i);
            if (hit < kWidth) return i + hit;
        }
        const std::size_t hit = InBlock(text.data() + lastBlock); // may overlap the previous block
        return hit < kWidth ? lastBlock + hit : text.npos;
    }

private:
    /// Returns the first match at the sixteen places from `block` on, or `kWidth`.
    std::size_t InBlock(const char* block) const {
        const __m128i firsts = first.In(load(block));
        const __m128i lasts = last.In(load(block + part.size() - 1));
        for (unsigned int hits = maskOf(_mm_and_si128(firsts, lasts)); hits; hits &= hits - 1) {
            if (scalar::StandsAt<fold>(block + firstOf(hits), part)) return firstOf(hits);
        }
        return kWidth;
    }

    std::string_view part;
    std::conditional_t<fold, EitherCase, OneCase> first, last;
};

bool findByteShuffle() {
    unsigned int eax, ebx, ecx, edx;
    return __get_cpuid(1, &eax, &ebx, &ecx, &edx) && (ecx & bit_SSSE3);
}

/// Returns whether the processor has the byte shuffle. The first call asks the processor.
bool hasByteShuffle() {
    enum { kUnknown, kNo, kYes };
    static int gSupport = kUnknown; // the builtins prevent a data race of two first calls
    int known = __atomic_load_n(&gSupport, __ATOMIC_RELAXED);
    if (known == kUnknown) {
        known = findByteShuffle() ? kYes : kNo;
        __atomic_store_n(&gSupport, known, __ATOMIC_RELAXED);
    }
    return known == kYes;
}

/// For each mask of eight bytes: the places of the bytes whose bit is clear, in order, and their number.
struct KeptBytes {
    std::array<std::uint64_t, 256> places{};
    std::array<unsigned char, 256> count{};

    constexpr KeptBytes() {
        for (unsigned int dropped = 0; dropped < 256; ++dropped) {
            for (std::uint64_t place = 0; place < 8; ++place) {
                if (!(dropped >> place & 1)) places[dropped] |= place << 8 * count[dropped]++;
            }
        }
    }
};
constexpr KeptBytes kKept;

/// Writes the eight lower bytes without the dropped ones.
__attribute__((target("ssse3"))) char* writeKept(__m128i v, unsigned int dropped, char* out) {
    const __m128i places = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&kKept.places[dropped]));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(v, places));
    return out + kKept.count[dropped];
}

/// Sixteen bytes with their white space turned into blanks, and the mask of the white space.
struct Blanked {
    unsigned int spaces;
    __m128i bytes;

    explicit Blanked(__m128i v) {
        const __m128i lanes = _mm_or_si128(isAmong(v, '\t', 5), _mm_or_si128(is(v, ' '), is(v, '\xA0')));
        spaces = maskOf(lanes);
        bytes = _mm_or_si128(_mm_andnot_si128(lanes, v), _mm_and_si128(lanes, every(' ')));
    }
    /// Returns the mask of the white space that follows white space.
    unsigned int Dropped(bool afterSpace) const { return spaces & (spaces << 1 | afterSpace) & 0xFFFF; }
};

__attribute__((target("ssse3"))) char* writeWordsByShuffles(std::string_view text, char* out) {
    bool afterSpace = true;
    std::size_t i = 0;
    for (; i + kWidth <= text.size(); i += kWidth) {
        const Blanked next(load(text.data() + i));
        const unsigned int dropped = next.Dropped(afterSpace);
        afterSpace = next.spaces >> (kWidth - 1);
        if (dropped == 0) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), next.bytes);
            out += kWidth;
        } else {
            out = writeKept(next.bytes, dropped & 0xFF, out);
            out = writeKept(_mm_unpackhi_epi64(next.bytes, next.bytes), dropped >> 8, out);
        }
    }
    return scalar::WriteWords(text.substr(i), out, afterSpace);
}

} // namespace

std::size_t Find(std::string_view text, std::string_view part) { return Finder<false>(part).In(text); }

std::size_t FindFolded(std::string_view text, std::string_view part) { return Finder<true>(part).In(text); }

bool EqualFolded(const char* a, const char* b, std::size_t n) {
    bool ended = false;
    if (n < kWidth) {
        if (n < kWidth / 2) return scalar::EqualFolded(a, b, n);
        return equalFolded(loadEnds(a, n), loadEnds(b, n), ended);
    }
    for (std::size_t i = 0;;
         i = std::min(i + kWidth, n - kWidth)) { // the last block may overlap the previous one
        const bool equal = equalFolded(load(a + i), load(b + i), ended);
        if (ended || i == n - kWidth) return equal;
    }
}

char* WriteWords(std::string_view text, char* out) {
    return hasByteShuffle() ? writeWordsByShuffles(text, out) : scalar::WriteWords(text, out, true);
}

std::size_t LowestPlaceholder(std::string_view text) {
    if (text.size() <= kWidth) return scalar::LowestPlaceholder(text);
    const std::size_t lastBlock = text.size() - 1 - kWidth;
    std::size_t best = text.npos;
    char above = '9' + 1;
    for (std::size_t i = 0;;
         i = std::min(i + kWidth, lastBlock)) { // the last block may overlap the previous one
        const char* const block = text.data() + i;
        const __m128i signs = _mm_and_si128(is(load(block), '%'), isAmong(load(block + 1), '0', 10));
        for (unsigned int hits = maskOf(signs); hits; hits &= hits - 1) {
            const std::size_t place = firstOf(hits);
            if (block[place + 1] >= above) continue;
            best = i + place;
            above = block[place + 1];
        }
        if (i == lastBlock) return best;
    }
}

std::size_t LastSeparator(std::string_view text) {
    if (text.size() < kWidth) return scalar::LastSeparator(text);
    for (std::size_t i = text.size() - kWidth;;
         i = i > kWidth ? i - kWidth : 0) { // the last block may overlap
        const unsigned int hits = separators(load(text.data() + i));
        if (hits) return i + lastOf(hits);
        if (i == 0) return text.npos;
    }
}

std::size_t CopyName(std::string_view text, char* out) {
    std::size_t i = 0;
    for (; i + kWidth <= text.size(); i += kWidth) {
        const __m128i v = load(text.data() + i);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), v);
        const unsigned int ends = separators(v);
        if (ends) return i + firstOf(ends);
    }
    return i + scalar::CopyName(text.substr(i), out + i);
}

bool HasDirtyPath(std::string_view text) {
    constexpr std::size_t behind = 2; // bytes examined after each byte
    if (text.size() < kWidth + behind) return scalar::HasDirtyPath(text);
    const std::size_t lastBlock = text.size() - behind - kWidth;
    for (std::size_t i = 0;;
         i = std::min(i + kWidth, lastBlock)) { // the last block may overlap the previous one
        const __m128i here = load(text.data() + i), next = load(text.data() + i + 1);
        const __m128i parents = _mm_and_si128(is(next, '.'), is(load(text.data() + i + behind), '.'));
        const __m128i dirt = _mm_and_si128(is(here, '/'), _mm_or_si128(is(next, '/'), parents));
        if (maskOf(_mm_or_si128(dirt, is(here, '\\')))) return true;
        if (i == lastBlock) return scalar::HasDirtyPath(text.substr(text.size() - behind));
    }
}

} // namespace text_scan
