#pragma once

/// The loops of the forms that work on a block of elements at a time.
///
/// A block type is a class of the including source, in its unnamed namespace, so that what is made from these
/// templates belongs to that source alone: each is compiled for other instructions. It has
///
///     using Source = ...; using Target = ...;
///     static constexpr unsigned int count = ...;      elements a block
///     template <bool stream> void Convert(const Source* src, Target* dst) const;
///
/// where `stream` asks for stores past the caches, into an aligned destination.

#include <cstddef>
#include <cstdint>
#include <xmmintrin.h>

namespace IPP {

/// Read and written bytes from which on stores past the caches pay: below, the result is still in a cache
/// when it is read. Half this size already loses then.
constexpr unsigned int streamingBytes = 24u << 20;

/// Bytes from which on the processor's own string store fills faster than a loop: it does not read first what
/// it is going to write.
constexpr std::size_t stringFillBytes = 1u << 20;

/// Fills by that store where the pattern repeats four bytes; else answers false.
bool FillByString(std::size_t bytes, unsigned char* dst, const unsigned char* pattern);

/// Elements up to the first address that is a multiple of `alignment`; more than a block when there is none.
template <unsigned int alignment, typename Block>
unsigned int elementsToAlignment(const typename Block::Target* dst) {
    constexpr unsigned int size = sizeof(typename Block::Target);
    const unsigned int bytes = static_cast<unsigned int>(-reinterpret_cast<std::uintptr_t>(dst) % alignment);
    return bytes % size == 0 ? bytes / size : Block::count + 1;
}

/// Converts `first`, `first` + one block, ... as long as a whole block lies before `last`'s end, then the
/// block at `last`, which may overlap the one before: no rest is left for single elements.
template <bool stream, typename Block>
void convertBlocks(unsigned int first, unsigned int last, const typename Block::Source* src,
                   typename Block::Target* dst, const Block& block) {
    std::size_t i = first;
    for (; i + Block::count < last;
         i += 2 * Block::count) { // two, so that small blocks are not outrun by the loop
        block.template Convert<stream>(src + i, dst + i);
        block.template Convert<stream>(src + i + Block::count, dst + i + Block::count);
    }
    if (i < last) block.template Convert<stream>(src + i, dst + i);
    if (stream) _mm_sfence(); // stores past the caches are otherwise not ordered with those of other code
    block.template Convert<false>(src + last, dst + last);
}

/// Converts an array of at least one block. `alignment` is that of the widest store.
template <unsigned int alignment, typename Block>
void convertArray(unsigned int count, const typename Block::Source* src, typename Block::Target* dst,
                  const Block& block) {
    constexpr std::size_t bytesEach = sizeof(typename Block::Source) + sizeof(typename Block::Target);
    const unsigned int last = count - Block::count;
    if (count >= streamingBytes / bytesEach) {
        const unsigned int first = elementsToAlignment<alignment, Block>(dst);
        if (first <= Block::count) {
            block.template Convert<false>(src, dst);
            convertBlocks<true>(first, last, src, dst, block);
            return;
        }
    }
    convertBlocks<false>(0, last, src, dst, block);
}

} // namespace IPP
