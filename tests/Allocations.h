#pragma once

#include <cstddef>

// A program that links Allocations.cpp has its own global operator new; bundles that it loads take it, too.

/// Calls of operator new so far.
std::size_t allocationCount();

/// Allocations that `work` makes.
template <typename Work>
std::size_t AllocationsOf(Work work) {
    const std::size_t before = allocationCount();
    work();
    return allocationCount() - before;
}

/// While one lives, operator new refuses blocks larger than this.
class ScarceMemory {
public:
    explicit ScarceMemory(std::size_t largestBlock);
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;
    ~ScarceMemory();
};
