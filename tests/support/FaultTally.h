#pragma once

#include <cstdio>

/// Prints a line for the table at the end of a full test run: the fault, how often the test injected the
/// fault, and how often data was lost.
inline void TallyFault(const char* fault, unsigned times, unsigned lost) {
    std::printf("fault|%s|%u|%u\n", fault, times, lost);
}
