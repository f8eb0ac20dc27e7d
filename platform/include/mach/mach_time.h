#pragma once

/// The monotonic clock of the kernel.

#include <MacTypes.h>

using kern_return_t = int;
struct mach_timebase_info_data_t {
    std::uint32_t numer;
    std::uint32_t denom;
};
using mach_timebase_info_t = mach_timebase_info_data_t*;

MACPLATFORM_C_BEGIN

/// Returns the ticks since the start of the machine. The clock does not advance while the machine sleeps.
std::uint64_t mach_absolute_time(void);
/// Writes the nanoseconds per tick as a fraction. Returns 0 for success.
kern_return_t mach_timebase_info(mach_timebase_info_t);

MACPLATFORM_C_END
