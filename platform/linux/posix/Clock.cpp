#include <CoreFoundation/CFDate.h>
#include <mach/mach_time.h>

#include "trace/PlatformFunction.h"

#include <ctime>

using namespace macplatform;

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
    constexpr CFTimeInterval secondsFrom1970To2001 = 978307200.0;
    return MakePlatformCall("CFAbsoluteTimeGetCurrent", [] {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        return static_cast<CFTimeInterval>(now.tv_sec) - secondsFrom1970To2001 +
               static_cast<CFTimeInterval>(now.tv_nsec) * 1e-9;
    });
}

std::uint64_t mach_absolute_time() {
    return MakePlatformCall("mach_absolute_time", [] {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC,
                      &now); // does not advance while the machine sleeps, like the Mac's clock
        return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000U +
               static_cast<std::uint64_t>(now.tv_nsec);
    });
}

kern_return_t mach_timebase_info(mach_timebase_info_t info) {
    constexpr kern_return_t invalidArgument = 4;
    const auto noArguments = [] { return Texts(); };
    return MakePlatformCall("mach_timebase_info", noArguments, [info]() -> kern_return_t {
        if (!info) return invalidArgument;
        *info = {1, 1};
        return 0;
    });
}
