#pragma once

/// @file
/// Rounding of single-precision values to integers, and exact powers of two. Every implementation of the
/// vector routines must give the same bits, so these functions define each bit of their results. They call no
/// mathematical function of the C library and assume that the rounding direction is to nearest.

#include <cstring>
#include <limits>

namespace Util {

/// Returns the integer part of `x`. NaN and values outside the `int` range give the smallest `int`, as the
/// conversion of the processor does.
inline int TruncateToInt(float x) {
    return x >= -2147483648.0f && x < 2147483648.0f ? static_cast<int>(x) : std::numeric_limits<int>::min();
}

/// Returns +0.5 for `x` >= 0, also for -0.0. Returns -0.5 otherwise, also for NaN.
inline float HalfAwayFromZero(float x) { return x >= 0.0f ? 0.5f : -0.5f; }

/// Rounds `x` to the nearest integer, halves away from zero, by adding half in single precision and
/// truncating. The sum itself is rounded: the largest float below 0.5 gives 1, and an odd `x` from 2^23 to
/// 2^24 gives an even neighbour. Values out of range give the result of `TruncateToInt`.
inline int RoundToInt(float x) { return TruncateToInt(x + HalfAwayFromZero(x)); }

namespace math_detail {

/// Returns 2 to the power of `exponent`, assembled from its bits and therefore exact. The fraction of the
/// type has `fractionBits` bits, and its exponent is stored with `bias` added.
template <typename Float, typename Bits>
Float PowerOfTwo(long long exponent, int fractionBits, int bias) {
    static_assert(std::numeric_limits<Float>::is_iec559 && sizeof(Float) == sizeof(Bits),
                  "the bit pattern below is that of IEEE 754");
    if (exponent > bias) return std::numeric_limits<Float>::infinity();
    if (exponent < 1 - bias - fractionBits) return 0; // half the smallest denormal rounds to 0
    const Bits bits = exponent > -bias ? static_cast<Bits>(exponent + bias) << fractionBits
                                       : Bits(1) << (exponent + bias + fractionBits - 1);
    Float result;
    std::memcpy(&result, &bits, sizeof result);
    return result;
}

} // namespace math_detail

///@{
/// Returns 2 to the power of `exponent`. The result is a denormal, 0 or infinity where the type requires it.
inline float PowerOfTwo(long long exponent) {
    return math_detail::PowerOfTwo<float, unsigned int>(exponent, 23, 127);
}
inline double PowerOfTwoDouble(long long exponent) {
    return math_detail::PowerOfTwo<double, unsigned long long>(exponent, 52, 1023);
}
///@}

} // namespace Util
