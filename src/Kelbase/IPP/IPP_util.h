#pragma once

/// @file
/// Array routines: copying, filling, comparison, and conversion between sample types.

#include <cstddef>
#include <cstring>

/// Routines that work on whole arrays.
///
/// The first argument is the number of elements. A count of 0 does nothing; the pointers may then be null.
/// Source and destination have `count` elements each and must not overlap, except for `Move`. No function
/// allocates, throws or reports anything.
///
/// A conversion with a scale multiplies the value by 2 to the power of -scale. Any `int` is a valid scale.
/// The conversions from and to `short` do so for a limited range of scales only, see there.
///
/// The functions use the best instructions of the processor. The results are the same to the last bit on
/// every processor. The functions assume that the rounding direction is to nearest.
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
/// Divides by the signed 32-bit integer 1 << (scale mod 32). The divisor is 2^scale for a scale of 0 to 30,
/// and -2^31 if scale mod 32 is 31, as for 31 and -1.
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

/// Multiplies by the signed 32-bit integer 1 << (-scale mod 32), in single precision. The factor is 2^-scale
/// for a scale of 0 to -30, 2^(32 - scale) for 2 to 31, and -2^31 if -scale mod 32 is 31, as for 1 and -31.
///
/// With `round`, 0.5 with the sign of the source (+0.5 for a zero) is added to the product, in single
/// precision. With a negative factor this moves the product towards zero. The sum is truncated to 32 bits and
/// limited to -32768 to 32767. NaN and a sum that does not fit 32 bits, also a positive one, give -32768.
void Convert(unsigned int count, const float* src, short* dst, int scale, bool round);

/// Multiplies by 2^-scale in single precision. With `round`, adds 0.5 with the sign of the source. Truncates
/// the result. NaN and a result that does not fit 32 bits give -2147483648.
void Convert(unsigned int count, const float* src, int* dst, int scale, bool round);

///@{
/// These two functions do nothing, by design. Callers rely on an unchanged destination.
void Convert(unsigned int count, const float* src, unsigned char* dst, int scale, bool round);
void Convert(unsigned int count, const double* src, int* dst, int scale, bool round);
///@}

// Inline, because a call would cost more than the work. The functions of the C library must not get null
// pointers.

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
