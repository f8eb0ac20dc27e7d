#include <Kelbase/Util/TickCount.h>

#include <CoreFoundation/CFDate.h>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <mach/mach_time.h>
#include <sys/sysctl.h>

namespace Util {

namespace {

/// Returns the value truncated toward zero, modulo 2^64. Returns 0 for a value outside -2^63 to 2^64.
std::uint64_t truncateToUnsigned64(double value) {
    constexpr double two63 = 9223372036854775808.0;
    if (value >= -two63 && value < two63) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
    }
    return value >= two63 && value < 2 * two63 ? static_cast<std::uint64_t>(value) : 0;
}

} // namespace

unsigned int GetTickCountMillis() {
    const double millis = CFAbsoluteTimeGetCurrent() * 1000.0;
    return static_cast<std::uint32_t>(truncateToUnsigned64(millis + (millis >= 0.0 ? 0.5 : -0.5)));
}

int GetTimeSeconds() { return static_cast<int>(std::time(nullptr)); }

double GetCycleCountSeconds() {
    const std::uint64_t ticks = mach_absolute_time();
    mach_timebase_info_data_t base = {};
    mach_timebase_info(&base);
    return static_cast<double>(base.numer) * static_cast<double>(ticks) / static_cast<double>(base.denom) *
           1e-9;
}

double GetCPUCyclesPerSecond() {
    int mib[4];
    std::size_t entries = 4;
    if (sysctlnametomib("hw.cpufrequency", mib, &entries) != 0) return 0.0;

    std::uint64_t hertz = 0;
    std::size_t size = sizeof hertz;
    if (sysctl(mib, static_cast<unsigned int>(entries), &hertz, &size, nullptr, 0) != 0) return 0.0;
    return static_cast<double>(static_cast<std::uint32_t>(hertz));
}

void TimeMeasureStart(bool) {}
void TimeMeasureEnd(bool, const char*) {}

} // namespace Util
