#include "ScarceMemory.h"

#include <cstdint>
#include <cstdlib>
#include <new>

// The operators stand in a file of their own: a compiler that sees both them and a use of them would take the
// pair for a mismatch.

static std::size_t limit = SIZE_MAX;

ScarceMemory::ScarceMemory(std::size_t largestBlock) { limit = largestBlock; }
ScarceMemory::~ScarceMemory() { limit = SIZE_MAX; }

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return size <= limit ? std::malloc(size ? size : 1) : nullptr;
}
void* operator new(std::size_t size) {
    if (void* const block = operator new(size, std::nothrow)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
