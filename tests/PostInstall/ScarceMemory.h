#pragma once

#include <cstddef>

/// While one lives, operator new refuses blocks larger than this, also those that the bundle asks for.
class ScarceMemory {
public:
    explicit ScarceMemory(std::size_t largestBlock);
    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;
    ~ScarceMemory();
};
