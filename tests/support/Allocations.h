#pragma once

/// Declares functions that count allocations and make them fail. A program that links counted_allocations has
/// its own malloc and operator new.

#include <cstddef>
#include <sys/resource.h>

/// Returns the number of calls of malloc since the start of the program. Operator new calls malloc.
std::size_t AllocationCount();

/// Returns the number of allocations that `work` makes.
template <typename Work>
std::size_t AllocationsOf(Work work) {
    const std::size_t before = AllocationCount();
    work();
    return AllocationCount() - before;
}

/// Limits the memory of the process. The destructor removes the limits. malloc and operator new fail for a
/// block of more than `largestBlock` bytes. A resource limit also allows the process at most `largestBlock`
/// more bytes. The resource limit is for bundles, which have their own C++ library and do not call this
/// malloc.
class ScarceMemory {
public:
    explicit ScarceMemory(std::size_t largestBlock);
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;
    ~ScarceMemory();

private:
    rlimit before{};
};
