#pragma once

/// @file
/// Checks the length of a text against its limit.

#include <cstddef>
#include <cstdint>

/// Throws `std::length_error`.
[[noreturn]] void ThrowLengthError();

/// Returns `n`, the length of a new text in bytes. Throws `std::length_error` if `n` is 4 GiB or more (in a
/// 32-bit process, 2 GiB or more). Callers check a length before they allocate.
inline std::size_t CheckedLength(unsigned long long n) {
    if (n > 0xFFFFFFFFu || n > PTRDIFF_MAX) ThrowLengthError();
    return static_cast<std::size_t>(n);
}
