#pragma once

/// Rounding of single-precision values to integers, and exact powers of two. The vector routines promise the
/// same bits from every form, so these are defined to the last bit and never depend on the rounding mode that
/// a C library assumes.

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

/// 2 to the power of `exponent`, for any exponent: denormal, 0 or infinity where the type says so.
float PowerOfTwo(long long exponent);
double PowerOfTwoDouble(long long exponent);

} // namespace Util
