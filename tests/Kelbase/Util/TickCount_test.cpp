#include <Kelbase/Util/TickCount.h>

#include <CoreFoundation/CFDate.h>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <mach/mach_time.h>
#include <macplatform/CallLog.h>
#include <macplatform/ProcessIdentity.h>
#include <sys/sysctl.h>
#include <utility>

// These clocks replace the platform's clocks. They return fixed values.

static CFAbsoluteTime gNow;
static std::uint64_t gTicks;
static mach_timebase_info_data_t gTimeBase;

CFAbsoluteTime CFAbsoluteTimeGetCurrent() { return gNow; }
std::uint64_t mach_absolute_time() { return gTicks; }
kern_return_t mach_timebase_info(mach_timebase_info_t base) {
    *base = gTimeBase;
    return 0;
}

namespace {

TEST(TickCount, RoundsHalfAwayFromZeroAndWraps) {
    // The last rows do not fit 64 bits. No real clock returns such values.
    const std::pair<double, unsigned int> rows[] = {{0.0, 0},
                                                    {0.0004, 0},
                                                    {0.0005, 1},
                                                    {0.0625, 63},
                                                    {4294967.295, 4294967295U},
                                                    {4294967.296, 0},
                                                    {800000000.125, 1136083069U},
                                                    {-0.0004, 0},
                                                    {-0.0005, 4294967295U},
                                                    {-0.0625, 4294967233U},
                                                    {-1.0, 4294966296U},
                                                    {1e30, 0},
                                                    {-1e30, 0},
                                                    {std::numeric_limits<double>::infinity(), 0},
                                                    {std::numeric_limits<double>::quiet_NaN(), 0}};
    for (const auto& [seconds, millis] : rows) {
        gNow = seconds;
        EXPECT_EQ(Util::GetTickCountMillis(), millis) << seconds;
    }
}

TEST(TickCount, SecondsEqualTheStandardTime) {
    const auto before = static_cast<int>(std::time(nullptr));
    const int seconds = Util::GetTimeSeconds();
    EXPECT_TRUE(seconds >= before && seconds <= static_cast<int>(std::time(nullptr))) << seconds;
}

TEST(TickCount, CyclesFollowTheTimeBaseOfEachCall) {
    gTicks = 3000000000U;
    gTimeBase = {1, 1};
    EXPECT_DOUBLE_EQ(Util::GetCycleCountSeconds(), 3.0);
    gTimeBase = {125, 3};
    EXPECT_DOUBLE_EQ(Util::GetCycleCountSeconds(), 125.0);
    gTicks = 681156233136703U; // another order of multiplication and division rounds differently
    gTimeBase = {1001, 77};
    EXPECT_EQ(Util::GetCycleCountSeconds(), 0x1.0e3bee0fc2058p+23);
}

TEST(TickCount, MeasuringHasNoEffect) {
    gTicks = 1000000000U;
    gTimeBase = {1, 1};
    Util::TimeMeasureStart(true);
    Util::TimeMeasureEnd(true, "work");
    EXPECT_DOUBLE_EQ(Util::GetCycleCountSeconds(), 1.0);
}

TEST(TickCount, FrequencyIsTheLow32BitsOrZero) {
    macplatform::SetCpuFrequency(2400000000U);
    EXPECT_EQ(Util::GetCPUCyclesPerSecond(), 2400000000.0);
    macplatform::SetCpuFrequency(5000000000U);
    EXPECT_EQ(Util::GetCPUCyclesPerSecond(), 705032704.0);
    macplatform::InjectFault({"sysctl", 12});
    EXPECT_EQ(Util::GetCPUCyclesPerSecond(), 0.0);
    macplatform::InjectFault({"sysctlnametomib", 2});
    EXPECT_EQ(Util::GetCPUCyclesPerSecond(), 0.0);
    EXPECT_EQ(macplatform::CancelInjectedFaults(), 0U);
    EXPECT_EQ(Util::GetCPUCyclesPerSecond(), 705032704.0);
    int mib[2];
    std::size_t count = 2;
    EXPECT_EQ(sysctlnametomib("hw.cpufrequency", nullptr, &count), -1);
    EXPECT_EQ(sysctlnametomib("hw.cpufrequency", mib, nullptr), -1);
    macplatform::SetCpuFrequency(0);
    EXPECT_EQ(Util::GetCPUCyclesPerSecond(), 0.0);
    macplatform::SetCpuFrequency(std::nullopt);
}

} // namespace
