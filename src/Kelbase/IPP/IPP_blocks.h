#pragma once

/// @file
/// Defines the loops of the implementations that convert one block of elements in each step.
///
/// A block type is a class in the unnamed namespace of the including source. Each including source therefore
/// has its own instantiations of these templates. This separation is necessary, because each source is
/// compiled for different instructions. A block type has these members:
///
///     using Source = ...; using Target = ...;
///     static constexpr unsigned int kCount = ...;     elements in a block
///     template <bool stream> void Convert(const Source* src, Target* dst) const;
///
/// If `stream` is true, `Convert` uses non-temporal stores, and `dst` must be aligned.

#include <cstddef>
#include <cstdint>
#include <xmmintrin.h>

namespace IPP {

/// Non-temporal stores are used if at least this number of bytes is read and written in total. The results of
/// a smaller conversion are still in a cache when the program reads them. At half this size non-temporal
/// stores are slower.
constexpr unsigned int kStreamingBytes = 24u << 20;

/// For at least this number of bytes, the string instruction `stos` fills faster than a loop, because `stos`
/// does not read the destination first.
constexpr std::size_t kStringFillBytes = 1u << 20;

/// Fills the destination with the string instruction `stos` if the pattern of eight bytes repeats after four
/// bytes. Otherwise returns false and writes nothing.
bool FillByString(std::size_t bytes, unsigned char* dst, const unsigned char* pattern);

/// Returns the number of elements before the first element whose address is a multiple of `alignment`.
/// Returns `Block::kCount` + 1 if there is no such element.
template <unsigned int alignment, typename Block>
unsigned int ElementsToAlignment(const typename Block::Target* dst) {
    constexpr unsigned int size = sizeof(typename Block::Target);
    const unsigned int bytes = static_cast<unsigned int>(-reinterpret_cast<std::uintptr_t>(dst) % alignment);
    return bytes % size == 0 ? bytes / size : Block::kCount + 1;
}

/// Converts the blocks from the element `first` on that begin before the element `last`. Then converts the
/// block that begins at `last`. This block may overlap the previous block, so that no single elements remain.
template <bool stream, typename Block>
void ConvertBlocks(unsigned int first, unsigned int last, const typename Block::Source* src,
                   typename Block::Target* dst, const Block& block) {
    std::size_t i = first;
    // Two blocks in each pass, because the loop takes longer than a small block.
    for (; i + Block::kCount < last; i += 2 * Block::kCount) {
        block.template Convert<stream>(src + i, dst + i);
        block.template Convert<stream>(src + i + Block::kCount, dst + i + Block::kCount);
    }
    if (i < last) block.template Convert<stream>(src + i, dst + i);
    if (stream) _mm_sfence(); // orders the non-temporal stores before later stores
    block.template Convert<false>(src + last, dst + last);
}

/// Converts an array with at least `Block::kCount` elements. `alignment` is the size of the widest store in
/// bytes.
template <unsigned int alignment, typename Block>
void ConvertArray(unsigned int count, const typename Block::Source* src, typename Block::Target* dst,
                  const Block& block) {
    constexpr std::size_t bytesEach = sizeof(typename Block::Source) + sizeof(typename Block::Target);
    const unsigned int last = count - Block::kCount;
    if (count >= kStreamingBytes / bytesEach) {
        const unsigned int first = ElementsToAlignment<alignment, Block>(dst);
        if (first <= Block::kCount) {
            block.template Convert<false>(src, dst);
            ConvertBlocks<true>(first, last, src, dst, block);
            return;
        }
    }
    ConvertBlocks<false>(0, last, src, dst, block);
}

} // namespace IPP
