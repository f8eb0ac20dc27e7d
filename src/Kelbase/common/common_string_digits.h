#pragma once

#include <array>
#include <climits>
#include <cstring>

constexpr char digitAlphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// "00" to "99": two digits a division.
inline constexpr std::array<char, 200> digitPairs = [] {
    std::array<char, 200> pairs{};
    for (unsigned int i = 0; i < 200; ++i) pairs[i] = digitAlphabet[i % 2 == 0 ? i / 20 : i / 2 % 10];
    return pairs;
}();

/// Writes exactly `count` decimal digits in front of `end`, the lowest ones of `v`, and answers where they
/// begin.
inline char* writeLowDigits(char* end, unsigned int v, unsigned int count) {
    for (; count > 1; count -= 2, v /= 100) std::memcpy(end -= 2, &digitPairs[v % 100 * 2], 2);
    if (count > 0) *--end = digitAlphabet[v % 10];
    return end;
}

/// Writes the decimal digits of `v` in front of `end` and answers where they begin.
inline char* writeDecimal(char* end, unsigned long long v) {
    for (; v > UINT_MAX; v /= 100000000)
        end = writeLowDigits(end, static_cast<unsigned int>(v % 100000000), 8);
    auto low = static_cast<unsigned int>(v); // 32 bits divide faster
    for (; low >= 100; low /= 100) std::memcpy(end -= 2, &digitPairs[low % 100 * 2], 2);
    if (low < 10) {
        *--end = digitAlphabet[low];
        return end;
    }
    end -= 2;
    std::memcpy(end, &digitPairs[low * 2], 2);
    return end;
}

/// The same in another base, from 2 to 36.
template <typename Base>
char* writeDigits(char* end, unsigned long long v, Base base) {
    do {
        *--end = digitAlphabet[v % base];
        v /= base;
    } while (v != 0);
    return end;
}
