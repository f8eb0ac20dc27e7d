#pragma once

/// @file
/// The byte order of numbers.

#include <cstddef>
#include <cstring>

/// Conversion between numbers and bytes, with the least or the most significant byte first.
namespace Util::ByteOrder {

/// Whether the target machine stores the least significant byte first.
constexpr bool kMachineIsLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

///@{
/// Returns the bytes in the opposite order.
inline unsigned char Swapped(unsigned char bits) { return bits; }
inline unsigned short Swapped(unsigned short bits) { return __builtin_bswap16(bits); }
inline unsigned int Swapped(unsigned int bits) { return __builtin_bswap32(bits); }
inline unsigned long long Swapped(unsigned long long bits) { return __builtin_bswap64(bits); }
///@}

/// `Type` is the unsigned integer of `size` bytes. `size` is 1, 2, 4 or 8.
template <std::size_t size>
struct BitsOf;
/// @cond the specialisations are not part of the reference
template <>
struct BitsOf<1> {
    using Type = unsigned char;
};
template <>
struct BitsOf<2> {
    using Type = unsigned short;
};
template <>
struct BitsOf<4> {
    using Type = unsigned int;
};
template <>
struct BitsOf<8> {
    using Type = unsigned long long;
};
/// @endcond

/// Returns the number that the first sizeof(Number) bytes at `bytes` encode. The address need not be aligned.
template <typename Number>
Number Decode(const unsigned char* bytes, bool littleEndian) {
    typename BitsOf<sizeof(Number)>::Type bits;
    std::memcpy(&bits, bytes, sizeof bits);
    if (littleEndian != kMachineIsLittleEndian) bits = Swapped(bits);
    Number number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

/// Writes the sizeof(Number) bytes of the number. The address need not be aligned.
template <typename Number>
void Encode(Number number, unsigned char* bytes, bool littleEndian) {
    typename BitsOf<sizeof(Number)>::Type bits;
    std::memcpy(&bits, &number, sizeof bits);
    if (littleEndian != kMachineIsLittleEndian) bits = Swapped(bits);
    std::memcpy(bytes, &bits, sizeof bits);
}

} // namespace Util::ByteOrder
