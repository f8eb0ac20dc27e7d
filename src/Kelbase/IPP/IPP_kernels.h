#pragma once

/// @file
/// Defines the vector routines once for all instruction sets.
///
/// A source that includes this header defines a class `Vectors` for one instruction set in its unnamed
/// namespace. The templates have this class as a parameter, so that each source has its own instantiations.
/// This separation is necessary, because each source is compiled for different instructions. `Vectors` has
/// these static functions. A register is a vector type of the compiler.
///
///     const Implementation& Narrower()         the implementation for arrays shorter than a register
///     Register Every(value)                    repeats a float, a double or a `long long`
///     Register Load(const Source*, Target())   loads and converts the elements of one register
///     Register SignedHalf(floats)              0.5 with the signs of the floats
///     Register MultiplyAdd(x, y, z)            x * y + z; the product need not be rounded
///     Register Truncate(floats)                the smallest int for NaN and for values out of range
///     Register Pack(low, high)                 limits two registers of ints to the range of short
///     void Put<stream>(Target*, Register)      stores; if `stream` is true, with non-temporal stores
///                                              to an aligned address

#include <Kelbase/IPP/IPP_implementations.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <emmintrin.h>

namespace IPP {

/// Non-temporal stores are used if at least this number of bytes is read and written in total. The results of
/// a smaller conversion are still in a cache when the program reads them. At half this size non-temporal
/// stores are slower.
constexpr unsigned int kStreamingBytes = 24u << 20;

/// Arrays with at least this number of elements are stored to aligned addresses. In shorter arrays, the
/// additional block takes longer than it saves.
constexpr unsigned int kAlignedCount = 256;

/// For at least this number of bytes, the string instruction `stos` fills faster than a loop, because `stos`
/// does not read the destination first.
constexpr std::size_t kStringFillBytes = 1u << 20;

/// Fills the destination with the string instruction `stos` if the pattern of eight bytes repeats after four
/// bytes. Otherwise returns false and writes nothing.
bool FillByString(std::size_t bytes, unsigned char* dst, const unsigned char* pattern);

///@{
/// Returns whether processor and operating system can run the implementation.
bool HasSse2();
bool HasAvx2();
bool HasAvx512();
///@}

///@{
/// The conversions of kAvx512Implementation that use AVX-512.
void DoubleToFloatByAvx512(unsigned int count, const double* src, float* dst);
void ShortToDoubleByAvx512(unsigned int count, const short* src, double* dst, double factor);
///@}

///@{
/// Loads 8 or 16 bytes. The address needs no alignment.
static inline __m128i getHalf(const void* src) { return _mm_loadl_epi64(static_cast<const __m128i*>(src)); }
static inline __m128i get(const void* src) { return _mm_loadu_si128(static_cast<const __m128i*>(src)); }
///@}

/// Scales one register of floats and converts it to integers.
///
/// The multiplication and the addition may be fused, although the scalar implementation rounds the product.
/// The factor is a power of two, 0 or infinity. There are three cases. The product is exact. Or the product
/// overflows, and the sum overflows too. Or the product is smaller than a normal number, and its rounding
/// error does not change the sum with 0.5.
template <typename Vectors, bool round, typename Floats>
auto ToInts(const float* src, Floats factor) {
    const Floats x = Vectors::Load(src, float());
    if (!round) return Vectors::Truncate(x * factor);
    // For -0.0 the scalar implementation adds +0.5 and this one adds -0.5. Both sums are truncated to 0.
    return Vectors::Truncate(Vectors::MultiplyAdd(x, factor, Vectors::SignedHalf(x)));
}

///@{
/// Converts the elements of one register. `factor` is one register or nothing.
template <typename Vectors, bool round, typename Source, typename Target, typename... Registers>
auto ConvertRegister(const Source* src, Target target, Registers... factor) {
    return (Vectors::Load(src, target) * ... * factor);
}
template <typename Vectors, bool round, typename Floats>
auto ConvertRegister(const float* src, int, Floats factor) {
    return ToInts<Vectors, round>(src, factor);
}
template <typename Vectors, bool round, typename Floats>
auto ConvertRegister(const float* src, short, Floats factor) {
    return Vectors::Pack(ToInts<Vectors, round>(src, factor),
                         ToInts<Vectors, round>(src + sizeof factor / sizeof *src, factor));
}
///@}

/// Converts the blocks from the element `first` on that begin before the element `last`. `block(p)` returns
/// the converted elements from `p` on. The function is always inlined, because a call would take as long as
/// the conversion of a short array.
template <typename Vectors, bool stream, typename Source, typename Target, typename Block>
__attribute__((always_inline)) inline void ConvertBlocks(std::size_t first, unsigned int last,
                                                         const Source* src, Target* dst, Block block) {
    constexpr std::size_t each = sizeof(block(src)) / sizeof(Target);
    std::size_t i = first;
    // Two blocks in each pass, because the loop takes longer than a small block.
    for (; i + each < last; i += 2 * each) {
        Vectors::template Put<stream>(dst + i, block(src + i));
        Vectors::template Put<stream>(dst + i + each, block(src + i + each));
    }
    if (i < last) Vectors::template Put<stream>(dst + i, block(src + i));
}

/// Converts an array with at least one block. The last block may overlap the previous block, so that no
/// single elements remain. The second block of a long array is aligned and may overlap the first block.
template <typename Vectors, typename Source, typename Target, typename Block>
void ConvertArray(unsigned int count, const Source* src, Target* dst, Block block) {
    constexpr std::size_t size = sizeof(block(src));
    const unsigned int last = count - static_cast<unsigned int>(size / sizeof(Target));
    const std::size_t toAlignment = size - reinterpret_cast<std::uintptr_t>(dst) % size;
    const std::size_t first = toAlignment / sizeof(Target);
    if (count < kAlignedCount || toAlignment % sizeof(Target) != 0) {
        ConvertBlocks<Vectors, false>(0, last, src, dst, block);
    } else {
        Vectors::template Put<false>(dst, block(src));
        if (count < kStreamingBytes / (sizeof(Source) + sizeof(Target))) {
            ConvertBlocks<Vectors, false>(first, last, src, dst, block);
        } else {
            ConvertBlocks<Vectors, true>(first, last, src, dst, block);
            _mm_sfence(); // orders the non-temporal stores before later stores
        }
    }
    Vectors::template Put<false>(dst + last, block(src + last));
}

/// Implements the conversion of the entry `routine`.
template <typename Vectors, auto routine, bool round = false, typename Source, typename Target,
          typename... Factor>
void Convert(unsigned int count, const Source* src, Target* dst, Factor... factor) {
    const auto block = [=](const Source* p) {
        return ConvertRegister<Vectors, round>(p, Target(), Vectors::Every(factor)...);
    };
    if (count < sizeof(block(src)) / sizeof(Target))
        (Vectors::Narrower().*routine)(count, src, dst, factor...);
    else
        ConvertArray<Vectors>(count, src, dst, block);
}

template <typename Vectors>
void Fill(std::size_t bytes, unsigned char* dst, const unsigned char* pattern) {
    long long value;
    if (bytes < sizeof Vectors::Every(value)) {
        Vectors::Narrower().fill(bytes, dst, pattern);
        return;
    }
    if (bytes >= kStringFillBytes && FillByString(bytes, dst, pattern)) return;
    std::memcpy(&value, pattern, sizeof value);
    const auto v = Vectors::Every(value);
    const std::size_t last = bytes - sizeof v; // a multiple of the element size: the pattern continues
    for (std::size_t i = 0; i < last; i += sizeof v) Vectors::template Put<false>(dst + i, v);
    Vectors::template Put<false>(dst + last, v);
}

/// Returns the table of an implementation. The compiler evaluates this function, so that constructors of
/// static objects may call the routines.
template <typename Vectors>
constexpr Implementation MakeImplementation(const char* name, bool (*isSupported)()) {
    Implementation table = {};
    table.name = name;
    table.isSupported = isSupported;
    table.fill = Fill<Vectors>;
    table.charToFloat = Convert<Vectors, &Implementation::charToFloat>;
    table.floatToDouble = Convert<Vectors, &Implementation::floatToDouble>;
    table.doubleToFloat = Convert<Vectors, &Implementation::doubleToFloat>;
    table.shortToFloat = Convert<Vectors, &Implementation::shortToFloat>;
    table.shortToDouble = Convert<Vectors, &Implementation::shortToDouble>;
    table.intToFloat = Convert<Vectors, &Implementation::intToFloat>;
    table.intToDouble = Convert<Vectors, &Implementation::intToDouble>;
    table.floatToShort = Convert<Vectors, &Implementation::floatToShort>;
    table.floatToShortRounded = Convert<Vectors, &Implementation::floatToShortRounded, true>;
    table.floatToInt = Convert<Vectors, &Implementation::floatToInt>;
    table.floatToIntRounded = Convert<Vectors, &Implementation::floatToIntRounded, true>;
    return table;
}

} // namespace IPP
