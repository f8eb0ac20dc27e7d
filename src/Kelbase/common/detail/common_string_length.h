#pragma once

#include <cstddef>
#include <cstdint>

[[noreturn]] void refuseLength();

/// `n`, the length that a text is to have in bytes; throws `std::length_error` from 4 GiB on (in a 32-bit
/// process from 2 GiB), before anything of that size is allocated.
inline std::size_t checkedLength(unsigned long long n) {
    if (n > 0xFFFFFFFFu || n > PTRDIFF_MAX) refuseLength();
    return static_cast<std::size_t>(n);
}
