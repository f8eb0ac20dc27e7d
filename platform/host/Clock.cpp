#include <CoreFoundation/CFDate.h>

#include <ctime>

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
    constexpr CFTimeInterval secondsFrom1970To2001 = 978307200.0;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<CFTimeInterval>(now.tv_sec) - secondsFrom1970To2001 +
           static_cast<CFTimeInterval>(now.tv_nsec) * 1e-9;
}
