#pragma once

#include <cstdio>

/// Prints one line of the fault tally, the table at the end of a full test run. `times` is the number of
/// injections of the fault. `lost` is the number of injections after which data was lost.
inline void PrintFaultTally(const char* fault, unsigned times, unsigned lost) {
    std::printf("fault|%s|%u|%u\n", fault, times, lost);
}
