#pragma once

#include <cstddef>
#include <cstring>

/// Numbers as bytes, least or most significant first.
namespace Util::ByteOrder {

/// Whether the machine this is compiled for has the least significant byte first.
constexpr bool machineIsLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

///@{
/// The same bytes in the opposite order.
inline unsigned char Swapped(unsigned char bits) { return bits; }
inline unsigned short Swapped(unsigned short bits) { return __builtin_bswap16(bits); }
inline unsigned int Swapped(unsigned int bits) { return __builtin_bswap32(bits); }
inline unsigned long long Swapped(unsigned long long bits) { return __builtin_bswap64(bits); }
///@}

/// `Type` is the unsigned integer of `size` bytes: 1, 2, 4 or 8, no other.
template <std::size_t size>
struct BitsOf;
/// @cond only the general form is of use to readers
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

/// The number that the first bytes at `bytes` hold, as many as it has itself, at any address.
template <typename Number>
Number Decode(const unsigned char* bytes, bool littleEndian) {
    typename BitsOf<sizeof(Number)>::Type bits;
    std::memcpy(&bits, bytes, sizeof bits);
    if (littleEndian != machineIsLittleEndian) bits = Swapped(bits);
    Number number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

/// Writes as many bytes as the number has, to any address.
template <typename Number>
void Encode(Number number, unsigned char* bytes, bool littleEndian) {
    typename BitsOf<sizeof(Number)>::Type bits;
    std::memcpy(&bits, &number, sizeof bits);
    if (littleEndian != machineIsLittleEndian) bits = Swapped(bits);
    std::memcpy(bytes, &bits, sizeof bits);
}

} // namespace Util::ByteOrder
