#include <macplatform/ProcessIdentity.h>
#include <sys/sysctl.h>

#include "WholeFile.h"
#include "trace/PlatformFunction.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace macplatform;

namespace {

constexpr int kHardware = 6; // CTL_HW
/// The number of hw.cpufrequency. The Mac's kernel assigns numbers from 100 on to names without a fixed
/// number.
constexpr int kCpuFrequency = 100;

std::optional<std::uint64_t>& frequencyOverride() {
    static std::optional<std::uint64_t> gHertz;
    return gHertz;
}

/// Parses a frequency at the start of the text, in units of `unit` hertz. Returns the frequency in hertz.
/// Returns 0 if the text does not begin with a frequency.
std::uint64_t toHertz(const std::string& text, double unit) {
    const double hertz = std::strtod(text.c_str(), nullptr) * unit;
    return std::isfinite(hertz) && hertz >= 1 && hertz < 1e15
               ? static_cast<std::uint64_t>(std::llround(hertz))
               : 0;
}

/// Returns the contents of the file, and an empty string if the file cannot be read.
std::string textOf(const std::string& path) {
    constexpr std::size_t limit = std::size_t{16} << 20;
    std::string text;
    return macplatform::ReadWholeFile(path, limit, text) == 0 ? text : std::string();
}

std::uint64_t frequencyOfGovernor() {
    for (const char* name : {"base_frequency", "cpuinfo_max_freq"}) {
        const std::string kilohertz = textOf(std::string("/sys/devices/system/cpu/cpu0/cpufreq/") + name);
        if (const auto hertz = toHertz(kilohertz, 1e3)) return hertz;
    }
    return 0;
}

/// Returns a frequency from /proc/cpuinfo in hertz: the nominal frequency in the model name, or else the
/// present frequency of the first processor. Returns 0 if the file contains neither.
std::uint64_t frequencyOfCpuInfo() {
    const std::string text = textOf("/proc/cpuinfo");
    std::uint64_t present = 0;
    for (std::size_t start = 0, end; start < text.size(); start = end + 1) {
        end = std::min(text.find('\n', start), text.size());
        const std::string line = text.substr(start, end - start);
        if (const auto at = line.find("@ "); line.rfind("model name", 0) == 0 && at != line.npos) {
            const double unit = line.find("MHz", at) != line.npos ? 1e6 : 1e9;
            if (const auto hertz = toHertz(line.substr(at + 2), unit)) return hertz;
        } else if (const auto colon = line.find(": "); line.rfind("cpu MHz", 0) == 0 && present == 0) {
            if (colon != line.npos) present = toHertz(line.substr(colon + 2), 1e6);
        }
    }
    return present;
}

/// Returns the frequency in hertz. Returns 0 if the frequency is unknown, as in some virtual machines.
std::uint64_t frequency() {
    if (frequencyOverride()) return *frequencyOverride();
    const std::uint64_t hertz = frequencyOfGovernor();
    return hertz != 0 ? hertz : frequencyOfCpuInfo();
}

int refuse(long errorNumber) {
    errno = static_cast<int>(errorNumber);
    return -1;
}

/// A failed call sets errno and returns -1.
template <typename Result>
struct Errno : Failure<Result> {
    static constexpr long kNoMemory = ENOMEM;
    int operator()(long errorNumber) const { return refuse(errorNumber); }
};

} // namespace

void macplatform::SetCpuFrequency(std::optional<std::uint64_t> hertz) { frequencyOverride() = hertz; }

int sysctlnametomib(const char* name, int* mib, std::size_t* count) {
    const auto show = [name] { return Texts{Quoted(name)}; };
    return MakePlatformCall<Errno>("sysctlnametomib", show, [&] {
        if (!name || !mib || !count) return refuse(EFAULT);
        if (std::strcmp(name, "hw.cpufrequency") != 0 || frequency() == 0) return refuse(ENOENT);
        if (*count < 2) return refuse(ENOMEM);
        mib[0] = kHardware;
        mib[1] = kCpuFrequency;
        *count = 2;
        return 0;
    });
}

int sysctl(int* mib, unsigned int mibCount, void* oldValue, std::size_t* oldSize, void* newValue,
           std::size_t) {
    const bool isFrequency = mib && mibCount == 2 && mib[0] == kHardware && mib[1] == kCpuFrequency;
    const auto show = [isFrequency] { return isFrequency ? Texts{"hw.cpufrequency"} : Texts(); };
    return MakePlatformCall<Errno>("sysctl", show, [&](PlatformCall& call) {
        if (!mib || (oldValue && !oldSize)) return refuse(EFAULT);
        const std::uint64_t hertz = isFrequency ? frequency() : 0;
        if (hertz == 0) return refuse(ENOENT);
        if (newValue) return refuse(EPERM);
        if (oldValue) {
            if (*oldSize < sizeof hertz) return refuse(ENOMEM);
            std::memcpy(oldValue, &hertz, sizeof hertz);
        }
        if (oldSize) *oldSize = sizeof hertz;
        return call.Result(0, std::to_string(hertz));
    });
}
