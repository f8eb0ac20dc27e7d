#include "Allocations.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <new>
#include <unistd.h>

// A compiler that sees these definitions and a use of them in one file warns of mismatched functions.

namespace {
std::size_t gCount = 0;
std::size_t gLimit = SIZE_MAX;
} // namespace

std::size_t AllocationCount() { return gCount; }

ScarceMemory::ScarceMemory(std::size_t largestBlock) {
    gLimit = largestBlock;
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    getrlimit(RLIMIT_AS, &before);
    rlimit scarce = before;
    scarce.rlim_cur = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + largestBlock;
    setrlimit(RLIMIT_AS, &scarce);
}

ScarceMemory::~ScarceMemory() {
    setrlimit(RLIMIT_AS, &before);
    gLimit = SIZE_MAX;
}

extern "C" void* __real_malloc(std::size_t size);
extern "C" void* __wrap_malloc(std::size_t size) {
    ++gCount;
    return size <= gLimit ? __real_malloc(size) : nullptr;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size ? size : 1); }
void* operator new(std::size_t size) {
    if (void* const block = operator new(size, std::nothrow)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
