#pragma once

/// @file
/// Rounding of single-precision values to integers, and exact powers of two. The vector routines promise the
/// same bits from every form, so these are defined to the last bit. They call no function of the C library
/// and take the rounding direction to be "to nearest".

#include <cstring>
#include <limits>

namespace Util {

/// The integer part of `x`. NaN and everything outside the `int` range give the smallest `int`, as the
/// processor's own conversion does.
inline int TruncateToInt(float x) {
    return x >= -2147483648.0f && x < 2147483648.0f ? static_cast<int>(x) : std::numeric_limits<int>::min();
}

/// +0.5 for `x` >= 0 (so for -0.0 too), else -0.5, also for NaN.
inline float HalfAwayFromZero(float x) { return x >= 0.0f ? 0.5f : -0.5f; }

/// `x` rounded to the nearest integer, halves away from zero, by adding half in single precision and
/// truncating: the largest float below 0.5 gives 1, and an odd `x` from 2^23 up to 2^24 its even neighbour,
/// because there the sum itself is rounded. Out of range as `TruncateToInt`.
inline int RoundToInt(float x) { return TruncateToInt(x + HalfAwayFromZero(x)); }

namespace math_detail {

/// The number whose fraction has `fractionBits` bits and whose exponent is stored with `bias` added. It is
/// put together from its bits: exact by construction, and no C library is asked.
template <typename Float, typename Bits>
Float powerOfTwo(long long exponent, int fractionBits, int bias) {
    static_assert(std::numeric_limits<Float>::is_iec559 && sizeof(Float) == sizeof(Bits),
                  "the bit pattern below is that of IEEE 754");
    if (exponent > bias) return std::numeric_limits<Float>::infinity();
    if (exponent < 1 - bias - fractionBits) return 0; // half the smallest denormal rounds to even, so to 0
    const Bits bits = exponent > -bias ? static_cast<Bits>(exponent + bias) << fractionBits
                                       : Bits(1) << (exponent + bias + fractionBits - 1);
    Float result;
    std::memcpy(&result, &bits, sizeof result);
    return result;
}

} // namespace math_detail

///@{
/// 2 to the power of `exponent`, for any exponent: denormal, 0 or infinity where the type says so.
inline float PowerOfTwo(long long exponent) {
    return math_detail::powerOfTwo<float, unsigned int>(exponent, 23, 127);
}
inline double PowerOfTwoDouble(long long exponent) {
    return math_detail::powerOfTwo<double, unsigned long long>(exponent, 52, 1023);
}
///@}

} // namespace Util
