#pragma once

#include <cstddef>
#include <sys/resource.h>

// A program that links counted_allocations has its own malloc, and operator new.

/// Calls of malloc and of operator new so far.
std::size_t AllocationCount();

/// Allocations that `work` makes.
template <typename Work>
std::size_t AllocationsOf(Work work) {
    const std::size_t before = AllocationCount();
    work();
    return AllocationCount() - before;
}

/// While one lives, malloc and operator new refuse blocks larger than this, and the system gives the process
/// no more than that either: bundles have a C++ library of their own.
class ScarceMemory {
public:
    explicit ScarceMemory(std::size_t largestBlock);
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;
    ~ScarceMemory();

private:
    rlimit before{};
};
