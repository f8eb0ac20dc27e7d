#pragma once

#include <cstdio>

/// Tells what the table at the end of a full test run lists: a fault, how often it was made, and how often
/// something was lost by it.
inline void TallyFault(const char* fault, unsigned times, unsigned lost) {
    std::printf("fault|%s|%u|%u\n", fault, times, lost);
}
