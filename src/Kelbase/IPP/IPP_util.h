#pragma once

/// Whole arrays at once: copy, fill, compare, and conversion between sample types.
///
/// The element count comes first; a count of 0 does nothing, and null pointers are then welcome. Source and
/// destination hold `count` elements each and must not overlap, but for `Move`. Nothing is allocated, nothing
/// throws, nothing is reported.
///
/// Where a conversion takes a scale, the result is the value times 2 to the power of -scale. Any `int` may be
/// given.
///
/// Results do not depend on the processor, to the last bit: the widest instructions that it has are used, and
/// all give the same answers. The current rounding direction is taken to be "to nearest".

#include <cstddef>
#include <cstring>

namespace IPP {

///@{
/// Byte copies.
void Copy(unsigned int count, const char* src, char* dst);
void Copy(unsigned int count, const unsigned char* src, unsigned char* dst);
void Copy(unsigned int count, const short* src, short* dst);
void Copy(unsigned int count, const int* src, int* dst);
void Copy(unsigned int count, const unsigned int* src, unsigned int* dst);
void Copy(unsigned int count, const float* src, float* dst);
void Copy(unsigned int count, const double* src, double* dst);
///@}

///@{
/// Byte copies between arrays that may overlap.
void Move(unsigned int count, const unsigned char* src, unsigned char* dst);
void Move(unsigned int count, const short* src, short* dst);
void Move(unsigned int count, const float* src, float* dst);
void Move(unsigned int count, const double* src, double* dst);
///@}

///@{
/// Every element becomes `value`. A value that compares equal to 0 is stored as zero bytes: -0.0 becomes
/// +0.0.
void Set(unsigned int count, unsigned char* dst, unsigned char value);
void Set(unsigned int count, short* dst, short value);
void Set(unsigned int count, int* dst, int value);
void Set(unsigned int count, unsigned int* dst, unsigned int value);
void Set(unsigned int count, float* dst, float value);
void Set(unsigned int count, double* dst, double value);
///@}

///@{
/// Every byte becomes 0.
void Zero(unsigned int count, unsigned char* dst);
void Zero(unsigned int count, short* dst);
void Zero(unsigned int count, int* dst);
void Zero(unsigned int count, unsigned int* dst);
void Zero(unsigned int count, float* dst);
void Zero(unsigned int count, double* dst);
///@}

/// Whether all bytes are equal; true for none.
bool Equal(unsigned int count, const unsigned char* a, const unsigned char* b);

///@{
/// Exact.
void Convert(unsigned int count, const unsigned char* src, float* dst);
void Convert(unsigned int count, const float* src, double* dst);
///@}
/// To the nearest float; infinity where there is none.
void Convert(unsigned int count, const double* src, float* dst);

///@{
/// Divides by the signed 32-bit integer 1 << (scale mod 32). That is 2^scale for 0 to 30, and -2^31 where
/// scale mod 32 is 31, as for 31 and -1.
void Convert(unsigned int count, const short* src, float* dst, int scale);
void Convert(unsigned int count, const short* src, double* dst, int scale);
///@}

///@{
/// Multiplies by 2^-scale, which may be a denormal, 0 or infinity in the type of the destination; 0 times
/// infinity is NaN. To float, the integer is rounded to the nearest float first, then the product.
void Convert(unsigned int count, const int* src, float* dst, int scale);
void Convert(unsigned int count, const int* src, double* dst, int scale);
///@}

/// Multiplies by the signed 32-bit integer 1 << (-scale mod 32), in single precision: by 2^-scale for 0 to
/// -30, by 2^(32 - scale) for 2 to 31, by -2^31 where -scale mod 32 is 31, as for 1 and -31. With `round`,
/// half with the sign of the source is then added, in single precision; +0.5 for zeros, and where the factor
/// is negative half towards zero. The result is truncated and held to -32768 and 32767. NaN, and whatever
/// does not fit 32 bits before that, becomes -32768, on the positive side too.
void Convert(unsigned int count, const float* src, short* dst, int scale, bool round);

/// Multiplies by 2^-scale in single precision; rounds as above or truncates. NaN and whatever does not fit
/// becomes -2147483648.
void Convert(unsigned int count, const float* src, int* dst, int scale, bool round);

///@{
/// These two leave the destination as it is, by design: callers count on getting it back unchanged.
void Convert(unsigned int count, const float* src, unsigned char* dst, int scale, bool round);
void Convert(unsigned int count, const double* src, int* dst, int scale, bool round);
///@}

// Those whose call would outweigh their work. The C library may not be given null pointers.

namespace detail {
template <typename T>
void copyElements(unsigned int count, const T* src, T* dst) {
    if (count) std::memcpy(dst, src, std::size_t{count} * sizeof(T));
}

template <typename T>
void zeroElements(unsigned int count, T* dst) {
    if (count) std::memset(dst, 0, std::size_t{count} * sizeof(T));
}
} // namespace detail

inline void Copy(unsigned int count, const char* src, char* dst) { detail::copyElements(count, src, dst); }
inline void Copy(unsigned int count, const unsigned char* src, unsigned char* dst) {
    detail::copyElements(count, src, dst);
}
inline void Copy(unsigned int count, const short* src, short* dst) { detail::copyElements(count, src, dst); }
inline void Copy(unsigned int count, const int* src, int* dst) { detail::copyElements(count, src, dst); }
inline void Copy(unsigned int count, const unsigned int* src, unsigned int* dst) {
    detail::copyElements(count, src, dst);
}
inline void Copy(unsigned int count, const float* src, float* dst) { detail::copyElements(count, src, dst); }
inline void Copy(unsigned int count, const double* src, double* dst) {
    detail::copyElements(count, src, dst);
}

inline void Zero(unsigned int count, unsigned char* dst) { detail::zeroElements(count, dst); }
inline void Zero(unsigned int count, short* dst) { detail::zeroElements(count, dst); }
inline void Zero(unsigned int count, int* dst) { detail::zeroElements(count, dst); }
inline void Zero(unsigned int count, unsigned int* dst) { detail::zeroElements(count, dst); }
inline void Zero(unsigned int count, float* dst) { detail::zeroElements(count, dst); }
inline void Zero(unsigned int count, double* dst) { detail::zeroElements(count, dst); }

inline bool Equal(unsigned int count, const unsigned char* a, const unsigned char* b) {
    return count == 0 || std::memcmp(a, b, count) == 0;
}

} // namespace IPP
