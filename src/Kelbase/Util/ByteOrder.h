#pragma once

#include <cstddef>
#include <cstring>

/// Numbers as bytes, least or most significant first.
namespace Util::ByteOrder {

constexpr bool machineIsLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

inline unsigned char Swapped(unsigned char bits) { return bits; }
inline unsigned short Swapped(unsigned short bits) { return __builtin_bswap16(bits); }
inline unsigned int Swapped(unsigned int bits) { return __builtin_bswap32(bits); }
inline unsigned long long Swapped(unsigned long long bits) { return __builtin_bswap64(bits); }

/// The unsigned integer as wide as a number of `size` bytes.
template <std::size_t size>
struct BitsOf;
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

template <typename Number>
Number Decode(const unsigned char* bytes, bool littleEndian) {
    typename BitsOf<sizeof(Number)>::Type bits;
    std::memcpy(&bits, bytes, sizeof bits);
    if (littleEndian != machineIsLittleEndian) bits = Swapped(bits);
    Number number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

template <typename Number>
void Encode(Number number, unsigned char* bytes, bool littleEndian) {
    typename BitsOf<sizeof(Number)>::Type bits;
    std::memcpy(&bits, &number, sizeof bits);
    if (littleEndian != machineIsLittleEndian) bits = Swapped(bits);
    std::memcpy(bytes, &bits, sizeof bits);
}

} // namespace Util::ByteOrder
