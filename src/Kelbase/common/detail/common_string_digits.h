#pragma once

/// @file
/// Writes and counts the digits of unsigned integers.

#include <array>
#include <climits>
#include <cstddef>
#include <cstring>
#include <limits>

constexpr char kDigitAlphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// Returns the pairs of digits of the numbers from 0 to `base` * `base` - 1. With this table, one division
/// gives two digits.
template <unsigned int base>
constexpr auto AllPairs() {
    std::array<std::array<char, 2>, std::size_t{base} * base> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = {kDigitAlphabet[i / base], kDigitAlphabet[i % base]};
    return pairs;
}
inline constexpr auto kDecimalPairs = AllPairs<10>();
inline constexpr auto kHexadecimalPairs = AllPairs<16>();

/// Writes the lowest `count` decimal digits of `v` directly before `end`. Returns the address of the first
/// digit.
inline char* WriteLowDigits(char* end, unsigned int v, unsigned int count) {
    for (; count > 1; count -= 2, v /= 100) std::memcpy(end -= 2, &kDecimalPairs[v % 100], 2);
    if (count > 0) *--end = kDigitAlphabet[v % 10];
    return end;
}

/// Writes the decimal digits of `v` directly before `end`. Returns the address of the first digit.
inline char* WriteDecimal(char* end, unsigned long long v) {
    for (; v > UINT_MAX; v /= 100000000)
        end = WriteLowDigits(end, static_cast<unsigned int>(v % 100000000), 8);
    auto low = static_cast<unsigned int>(v); // a 32-bit division is faster
    for (; low >= 100; low /= 100) std::memcpy(end -= 2, &kDecimalPairs[low % 100], 2);
    if (low < 10) {
        *--end = kDigitAlphabet[low];
        return end;
    }
    end -= 2;
    std::memcpy(end, &kDecimalPairs[low], 2);
    return end;
}

/// Returns the number of significant bits of `v`. Returns 1 for 0.
inline unsigned int CountBits(unsigned long long v) {
    return static_cast<unsigned int>(std::numeric_limits<unsigned long long>::digits -
                                     __builtin_clzll(v | 1));
}

/// Returns the number of digits of `v` in base 10.
inline unsigned int CountDecimal(unsigned long long v) {
    static constexpr std::array<unsigned long long, 20> powers = [] {
        std::array<unsigned long long, 20> list{}; // powers[0] is 0 instead of 1, so that 0 has one digit
        for (std::size_t i = 1; i < list.size(); ++i) list[i] = i == 1 ? 10 : list[i - 1] * 10;
        return list;
    }();
    const unsigned int atLeast = CountBits(v) * 1233 / 4096; // 1233 / 4096 is just below log10 2
    return atLeast + (v >= powers[atLeast]);
}

/// Returns the number of digits of `v` in base 16.
inline unsigned int CountHexadecimal(unsigned long long v) { return (CountBits(v) + 3) / 4; }

/// Writes the hexadecimal digits of `v` directly before `end`. `count` must be `CountHexadecimal(v)`.
inline void WriteHexadecimal(char* end, unsigned long long v, unsigned int count) {
    for (; count > 1; count -= 2, v >>= 8) std::memcpy(end -= 2, &kHexadecimalPairs[v & 0xFF], 2);
    if (count > 0) *--end = kDigitAlphabet[v];
}

/// Returns the number of digits of `v` in a base from 2 to 36.
inline unsigned int CountDigits(unsigned long long v, unsigned int base) {
    const unsigned long long lastToGrow = ULLONG_MAX / base;
    unsigned int count = 1;
    for (unsigned long long power = base; v >= power; power *= base) {
        ++count;
        if (power > lastToGrow) break;
    }
    return count;
}
/// Writes the digits of `v` in a base from 2 to 36 directly before `end`.
inline void WriteDigits(char* end, unsigned long long v, unsigned int base) {
    do {
        *--end = kDigitAlphabet[v % base];
        v /= base;
    } while (v != 0);
}
