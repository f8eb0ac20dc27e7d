#include <CoreFoundation/CFDate.h>
#include <mach/mach_time.h>

#include "trace/PlatformCall.h"

#include <ctime>

using macplatform::PlatformCall;

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
    constexpr CFTimeInterval secondsFrom1970To2001 = 978307200.0;
    PlatformCall call("CFAbsoluteTimeGetCurrent");
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return call.Result(static_cast<CFTimeInterval>(now.tv_sec) - secondsFrom1970To2001 +
                       static_cast<CFTimeInterval>(now.tv_nsec) * 1e-9);
}

std::uint64_t mach_absolute_time() {
    PlatformCall call("mach_absolute_time");
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now); // does not advance while the machine sleeps, like the Mac's clock
    return call.Result(static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000U +
                       static_cast<std::uint64_t>(now.tv_nsec));
}

kern_return_t mach_timebase_info(mach_timebase_info_t info) {
    constexpr kern_return_t invalidArgument = 4;
    PlatformCall call("mach_timebase_info");
    if (const auto code = call.ConsumeFault()) return call.Result(static_cast<kern_return_t>(*code));
    if (!info) return call.Result(invalidArgument);
    *info = {1, 1};
    return call.Result(0);
}
