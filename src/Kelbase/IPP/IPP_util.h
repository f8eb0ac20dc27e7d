#pragma once

/// @file
/// Declares routines for arrays: copying, filling, comparison, and conversion between sample types.

#include <cstddef>
#include <cstring>

/// Contains the routines for arrays.
///
/// The first argument is the number of elements. For a count of 0 the functions do nothing, and the pointers
/// may be null. Source and destination have `count` elements each and must not overlap, except for `Move`. No
/// function allocates, throws or reports anything.
///
/// A conversion with a scale multiplies each value by 2 to the power of -scale. Any `int` is a valid scale.
/// The conversions from and to `short` use another factor for some scales. Their comments describe the
/// factor.
///
/// The functions use the fastest implementation that the processor supports. The results are identical to the
/// last bit on every processor. The rounding mode of the processor must be "to nearest".
namespace IPP {

///@{
/// Copies the bytes.
void Copy(unsigned int count, const char* src, char* dst);
void Copy(unsigned int count, const unsigned char* src, unsigned char* dst);
void Copy(unsigned int count, const short* src, short* dst);
void Copy(unsigned int count, const int* src, int* dst);
void Copy(unsigned int count, const unsigned int* src, unsigned int* dst);
void Copy(unsigned int count, const float* src, float* dst);
void Copy(unsigned int count, const double* src, double* dst);
///@}

///@{
/// Copies the bytes between arrays that may overlap.
void Move(unsigned int count, const unsigned char* src, unsigned char* dst);
void Move(unsigned int count, const short* src, short* dst);
void Move(unsigned int count, const float* src, float* dst);
void Move(unsigned int count, const double* src, double* dst);
///@}

///@{
/// Sets every element to `value`. A value that equals 0 is stored as zero bytes: -0.0 becomes +0.0.
void Set(unsigned int count, unsigned char* dst, unsigned char value);
void Set(unsigned int count, short* dst, short value);
void Set(unsigned int count, int* dst, int value);
void Set(unsigned int count, unsigned int* dst, unsigned int value);
void Set(unsigned int count, float* dst, float value);
void Set(unsigned int count, double* dst, double value);
///@}

///@{
/// Sets every byte to 0.
void Zero(unsigned int count, unsigned char* dst);
void Zero(unsigned int count, short* dst);
void Zero(unsigned int count, int* dst);
void Zero(unsigned int count, unsigned int* dst);
void Zero(unsigned int count, float* dst);
void Zero(unsigned int count, double* dst);
///@}

/// Returns whether all bytes are equal. Returns true for a count of 0.
bool Equal(unsigned int count, const unsigned char* a, const unsigned char* b);

///@{
/// Converts without loss.
void Convert(unsigned int count, const unsigned char* src, float* dst);
void Convert(unsigned int count, const float* src, double* dst);
///@}
/// Converts to the nearest float. A value that is too large becomes infinite.
void Convert(unsigned int count, const double* src, float* dst);

///@{
/// Divides by the signed 32-bit integer 1 << (scale mod 32). For a scale of 0 to 30 the divisor is 2^scale.
/// If scale mod 32 is 31, for example for 31 and -1, the divisor is -2^31.
void Convert(unsigned int count, const short* src, float* dst, int scale);
void Convert(unsigned int count, const short* src, double* dst, int scale);
///@}

///@{
/// Multiplies by 2^-scale. In the type of the destination the factor may be a denormal, 0 or infinity; 0
/// times infinity is NaN. A conversion to float rounds the integer to the nearest float before the
/// multiplication.
void Convert(unsigned int count, const int* src, float* dst, int scale);
void Convert(unsigned int count, const int* src, double* dst, int scale);
///@}

/// Multiplies by the signed 32-bit integer 1 << (-scale mod 32), in single precision. For a scale of -30 to 0
/// the factor is 2^-scale. For a scale of 2 to 31 the factor is 2^(32 - scale). If -scale mod 32 is 31, for
/// example for 1 and -31, the factor is -2^31.
///
/// If `round` is true, adds 0.5 with the sign of the source (+0.5 for a zero) to the product, in single
/// precision. If the factor is negative, this addition moves the product towards zero. Truncates the sum to a
/// 32-bit integer and limits the integer to the range of -32768 to 32767. The result is -32768 for NaN and
/// for every sum that does not fit 32 bits, also for a positive sum.
void Convert(unsigned int count, const float* src, short* dst, int scale, bool round);

/// Multiplies by 2^-scale in single precision. If `round` is true, adds 0.5 with the sign of the source to
/// the product. Truncates the sum. The result is -2147483648 for NaN and for a sum that does not fit 32 bits.
void Convert(unsigned int count, const float* src, int* dst, int scale, bool round);

///@{
/// Does nothing. Callers rely on an unchanged destination.
void Convert(unsigned int count, const float* src, unsigned char* dst, int scale, bool round);
void Convert(unsigned int count, const double* src, int* dst, int scale, bool round);
///@}

// These functions are inline, because a call would take longer than the work. The check of `count` is
// necessary, because the functions of the C library do not accept null pointers.

namespace detail {
/// Copies the elements. The pointers may be null for a count of 0.
template <typename T>
void CopyElements(unsigned int count, const T* src, T* dst) {
    if (count) std::memcpy(dst, src, std::size_t{count} * sizeof(T));
}

/// Sets every byte to 0. The pointer may be null for a count of 0.
template <typename T>
void ZeroElements(unsigned int count, T* dst) {
    if (count) std::memset(dst, 0, std::size_t{count} * sizeof(T));
}
} // namespace detail

inline void Copy(unsigned int count, const char* src, char* dst) { detail::CopyElements(count, src, dst); }
inline void Copy(unsigned int count, const unsigned char* src, unsigned char* dst) {
    detail::CopyElements(count, src, dst);
}
inline void Copy(unsigned int count, const short* src, short* dst) { detail::CopyElements(count, src, dst); }
inline void Copy(unsigned int count, const int* src, int* dst) { detail::CopyElements(count, src, dst); }
inline void Copy(unsigned int count, const unsigned int* src, unsigned int* dst) {
    detail::CopyElements(count, src, dst);
}
inline void Copy(unsigned int count, const float* src, float* dst) { detail::CopyElements(count, src, dst); }
inline void Copy(unsigned int count, const double* src, double* dst) {
    detail::CopyElements(count, src, dst);
}

inline void Zero(unsigned int count, unsigned char* dst) { detail::ZeroElements(count, dst); }
inline void Zero(unsigned int count, short* dst) { detail::ZeroElements(count, dst); }
inline void Zero(unsigned int count, int* dst) { detail::ZeroElements(count, dst); }
inline void Zero(unsigned int count, unsigned int* dst) { detail::ZeroElements(count, dst); }
inline void Zero(unsigned int count, float* dst) { detail::ZeroElements(count, dst); }
inline void Zero(unsigned int count, double* dst) { detail::ZeroElements(count, dst); }

inline bool Equal(unsigned int count, const unsigned char* a, const unsigned char* b) {
    return count == 0 || std::memcmp(a, b, count) == 0;
}

} // namespace IPP
