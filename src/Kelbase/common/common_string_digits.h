#pragma once

#include <climits>

constexpr char digitAlphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// Writes the digits of `v` in front of `end` and answers where they begin. A base that the compiler knows
/// divides faster, and so do 32 bits.
template <typename Base>
char* writeDigits(char* end, unsigned long long v, Base base) {
    for (; v > UINT_MAX; v /= base) *--end = digitAlphabet[v % base];
    auto low = static_cast<unsigned int>(v);
    do {
        *--end = digitAlphabet[low % base];
        low /= base;
    } while (low != 0);
    return end;
}
