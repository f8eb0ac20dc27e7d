#pragma once

#include <MacTypes.h>

using kern_return_t = int;
struct mach_timebase_info_data_t {
    std::uint32_t numer;
    std::uint32_t denom;
};
using mach_timebase_info_t = mach_timebase_info_data_t*;

MACPLATFORM_C_BEGIN

/// Ticks since the machine started, standing still while it sleeps.
std::uint64_t mach_absolute_time(void);
/// Nanoseconds a tick, as a fraction; 0 for success.
kern_return_t mach_timebase_info(mach_timebase_info_t);

MACPLATFORM_C_END
