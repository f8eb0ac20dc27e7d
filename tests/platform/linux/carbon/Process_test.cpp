#include <Carbon/MacErrors.h>
#include <Carbon/MacMemory.h>
#include <Carbon/Multiprocessing.h>
#include <Carbon/Processes.h>
#include <CoreFoundation/CFDate.h>
#include <mach/mach_time.h>
#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>
#include <macplatform/ProcessIdentity.h>
#include <sys/sysctl.h>

#include "support/InChild.h"
#include "support/TemporaryFolder.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <sched.h>
#include <sys/mount.h>

using namespace macplatform;

namespace {

constexpr ProcessSerialNumber kThisProcess{0, kCurrentProcess};

TEST(Process, HasTheExecutablesName) {
    unsigned char name[256] = {};
    FSSpec file;
    ProcessInfoRec info{};
    info.processInfoLength = sizeof info;
    info.processName = name;
    info.processAppSpec = &file;
    ASSERT_EQ(GetProcessInformation(&kThisProcess, &info), noErr);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(name + 1), name[0]), "platform_services_test");
    EXPECT_EQ(std::memcmp(file.name, name, name[0] + 1U), 0);
    EXPECT_EQ(info.processType, FourCharCode{'APPL'});
    EXPECT_EQ(info.processSignature, FourCharCode{0x3F3F3F3F}) << "????";

    SetProcessName(std::string(300, 'x'));
    EXPECT_EQ(GetProcessInformation(&kThisProcess, &info), noErr);
    EXPECT_EQ(name[0], 255);
    EXPECT_EQ(file.name[0], 63);
    SetProcessName("");
}

TEST(Process, WritesNothingAfterTheEndOfAShorterRecord) {
    ProcessInfoRec info;
    std::memset(&info, 0x55, sizeof info);
    info.processInfoLength = offsetof(ProcessInfoRec, processType);
    info.processName = nullptr;
    EXPECT_EQ(GetProcessInformation(&kThisProcess, &info), noErr);
    EXPECT_EQ(info.processNumber.highLongOfPSN, kThisProcess.highLongOfPSN);
    EXPECT_EQ(info.processNumber.lowLongOfPSN, kCurrentProcess);
    EXPECT_EQ(info.processType, 0x55555555U);

    const ProcessSerialNumber other{0, 77};
    EXPECT_EQ(GetProcessInformation(&other, &info), procNotFound);
    EXPECT_EQ(GetProcessInformation(&kThisProcess, nullptr), paramErr);
}

TEST(Sysctl, ReturnsTheFrequencyAsEightBytes) {
    int mib[4] = {};
    std::size_t count = 4;
    SetCpuFrequency(2'400'000'000U);
    ASSERT_EQ(sysctlnametomib("hw.cpufrequency", mib, &count), 0);
    std::uint64_t hertz = 0;
    std::size_t size = 4;
    EXPECT_EQ(sysctl(mib, 2, &hertz, &size, nullptr, 0), -1);
    EXPECT_EQ(errno, ENOMEM);
    size = sizeof hertz;
    EXPECT_EQ(sysctl(mib, static_cast<unsigned>(count), &hertz, &size, nullptr, 0), 0);
    EXPECT_EQ(hertz, 2'400'000'000U);
    EXPECT_EQ(size, 8U);
    EXPECT_EQ(sysctl(mib, 2, nullptr, nullptr, &hertz, size), -1);

    SetCpuFrequency(0);
    EXPECT_EQ(sysctlnametomib("hw.cpufrequency", mib, &count), -1);
    EXPECT_EQ(errno, ENOENT);
    SetCpuFrequency({});
    EXPECT_EQ(sysctlnametomib("hw.unknown", mib, &count), -1);
    EXPECT_EQ(errno, ENOENT);
}

/// Returns the frequency that the system call reports for a text of the kernel. Must run in a mount
/// namespace.
std::uint64_t frequencyIn(const std::string& cpuInfo) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("cpuinfo", cpuInfo);
    mount("none", "/sys/devices/system/cpu", "tmpfs", 0, nullptr); // hides the governor
    mount(file.c_str(), "/proc/cpuinfo", nullptr, MS_BIND, nullptr);
    int mib[2] = {6, 100};
    std::uint64_t hertz = 0;
    std::size_t size = sizeof hertz;
    sysctl(mib, 2, &hertz, &size, nullptr, 0);
    umount("/proc/cpuinfo");
    return hertz;
}

TEST(Sysctl, FindsTheFrequencyInTheTextOfTheKernel) {
    const std::pair<const char*, std::uint64_t> rows[] = {
        {"model name\t: x @ 2.50GHz\ncpu MHz\t: 800\n", 2'500'000'000},
        {"cpu MHz\t: 800.5\ncpu MHz\t: 900\nmodel name\t: x @ 900MHz\n", 900'000'000},
        {"no model name @ 3GHz\nmodel name\t: x\ncpu MHz\t: 800.5\ncpu MHz\t: 900\n", 800'500'000},
        {"cpu MHz\nmodel name\t: x @ nanGHz\n", 0},
        {"cpu MHz\t: 0.000001\n", 1},
        {"model name\t: x @ 1000000GHz\n", 0}};
    const int wrongRow = InChild([&rows] {
        if (unshare(CLONE_NEWNS) || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr)) return 77;
        int row = 0;
        for (const auto& [text, hertz] : rows) {
            ++row;
            if (frequencyIn(text) != hertz) return row;
        }
        return 0;
    });
    if (wrongRow == 77) GTEST_SKIP() << "only root can replace the text";
    EXPECT_EQ(wrongRow, 0);
}

TEST(Sysctl, KeepsErrnoWhenTheObserverChangesIt) {
    SetCallObserver([](const RecordedCall&) { errno = EDOM; });
    InjectFault({"sysctlnametomib", EIO});
    EXPECT_EQ(sysctlnametomib("hw.cpufrequency", nullptr, nullptr), -1);
    EXPECT_EQ(errno, EIO);
    SetCallObserver({});
}

TEST(Clock, ReturnsTheSecondsSince2001) {
    const auto standardTime = [] {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);
        return static_cast<double>(now.tv_sec - 978307200) + static_cast<double>(now.tv_nsec) * 1e-9;
    };
    for (int i = 0; i < 100; ++i) {
        const double before = standardTime();
        const double seconds = CFAbsoluteTimeGetCurrent();
        EXPECT_TRUE(before <= seconds && seconds <= standardTime()) << seconds - before;
    }
}

TEST(Machine, CountsProcessorsAndNanoseconds) {
    EXPECT_GE(MPProcessors(), 1U);
    mach_timebase_info_data_t base{};
    EXPECT_EQ(mach_timebase_info(&base), 0);
    EXPECT_EQ(base.numer, base.denom);
    const std::uint64_t before = mach_absolute_time();
    EXPECT_LE(before, mach_absolute_time());
}

TEST(Memory, ReturnsAlignedBlocksThatAreTrackedUntilDisposed) {
    const std::size_t before = LiveObjectCount();
    const Ptr empty = NewPtr(0);
    const Ptr block = NewPtr(100);
    ASSERT_TRUE(empty && block);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0U);
    std::memset(block, 0x7F, 100);
    EXPECT_EQ(LiveObjectCount(), before + 2);
    EXPECT_EQ(DescribeLiveObjects().back(), "memory block of 100 bytes");
    DisposePtr(block);
    DisposePtr(empty);
    DisposePtr(nullptr);
    EXPECT_EQ(LiveObjectCount(), before);
}

TEST(Memory, ReportsTheFailureOfTheLastCall) {
    EXPECT_EQ(NewPtr(-1), nullptr);
    EXPECT_EQ(MemError(), memFullErr);
    EXPECT_EQ(NewPtr(std::numeric_limits<Size>::max()), nullptr);
    EXPECT_EQ(MemError(), memFullErr);
    InjectFault({"NewPtr", memFullErr});
    EXPECT_EQ(NewPtr(8), nullptr);
    EXPECT_EQ(MemError(), memFullErr);
    DisposePtr(NewPtr(8));
    EXPECT_EQ(MemError(), noErr);
}

} // namespace
