#pragma once

#include <cstddef>

/// Calls of the global operator new so far; a program that links AllocationCount.cpp counts them.
std::size_t allocationCount();

/// Allocations that `work` makes.
template <typename Work>
std::size_t AllocationsOf(Work work) {
    const std::size_t before = allocationCount();
    work();
    return allocationCount() - before;
}
