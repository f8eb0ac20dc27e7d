#pragma once

/// Counts allocations and makes them fail. A program that links counted_allocations has its own malloc and
/// operator new.

#include <cstddef>
#include <sys/resource.h>

/// Returns the number of calls of malloc since the start. Operator new calls malloc.
std::size_t AllocationCount();

/// Returns the number of allocations that `work` makes.
template <typename Work>
std::size_t AllocationsOf(Work work) {
    const std::size_t before = AllocationCount();
    work();
    return AllocationCount() - before;
}

/// Limits the memory of the process. The destructor removes the limits. malloc and operator new fail for a
/// block of more than `largestBlock` bytes. The system gives the process at most `largestBlock` more bytes,
/// because a bundle has its own C++ library and does not call this malloc.
class ScarceMemory {
public:
    explicit ScarceMemory(std::size_t largestBlock);
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;
    ~ScarceMemory();

private:
    rlimit before{};
};
