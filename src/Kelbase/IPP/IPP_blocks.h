#pragma once

/// @file
/// The loops of the implementations that convert a block of elements at a time.
///
/// A block type is a class in the unnamed namespace of the including source. The instantiations of these
/// templates therefore belong to that source alone: each source is compiled for other instructions. A block
/// type has
///
///     using Source = ...; using Target = ...;
///     static constexpr unsigned int count = ...;      elements in a block
///     template <bool stream> void Convert(const Source* src, Target* dst) const;
///
/// where `stream` requests non-temporal stores to an aligned destination.

#include <cstddef>
#include <cstdint>
#include <xmmintrin.h>

namespace IPP {

/// Non-temporal stores are used if at least this number of bytes is read and written. The results of smaller
/// conversions are still in a cache when they are read next; at half this size non-temporal stores are
/// slower.
constexpr unsigned int kStreamingBytes = 24u << 20;

/// The string store of the processor fills at least this number of bytes faster than a loop, because it does
/// not read the destination first.
constexpr std::size_t kStringFillBytes = 1u << 20;

/// Fills with the string store if the pattern repeats after four bytes. Returns false otherwise.
bool FillByString(std::size_t bytes, unsigned char* dst, const unsigned char* pattern);

/// Returns the number of elements before the first address that is a multiple of `alignment`, or more than a
/// block if there is none.
template <unsigned int alignment, typename Block>
unsigned int ElementsToAlignment(const typename Block::Target* dst) {
    constexpr unsigned int size = sizeof(typename Block::Target);
    const unsigned int bytes = static_cast<unsigned int>(-reinterpret_cast<std::uintptr_t>(dst) % alignment);
    return bytes % size == 0 ? bytes / size : Block::kCount + 1;
}

/// Converts the blocks from `first` on that begin before `last`, then the block at `last`. The last block may
/// overlap the previous one, so that no single elements remain.
template <bool stream, typename Block>
void ConvertBlocks(unsigned int first, unsigned int last, const typename Block::Source* src,
                   typename Block::Target* dst, const Block& block) {
    std::size_t i = first;
    for (; i + Block::kCount < last;
         i += 2 * Block::kCount) { // two blocks a pass, because the loop costs more than a small block
        block.template Convert<stream>(src + i, dst + i);
        block.template Convert<stream>(src + i + Block::kCount, dst + i + Block::kCount);
    }
    if (i < last) block.template Convert<stream>(src + i, dst + i);
    if (stream) _mm_sfence(); // orders the non-temporal stores before later stores
    block.template Convert<false>(src + last, dst + last);
}

/// Converts an array of at least one block. `alignment` is the size of the widest store.
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
