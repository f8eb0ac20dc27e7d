#include <Carbon/MacErrors.h>
#include <Carbon/Multiprocessing.h>
#include <Carbon/Processes.h>
#include <macplatform/ProcessIdentity.h>

#include "trace/PlatformFunction.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <unistd.h>

using namespace macplatform;

namespace {

std::string& givenName() {
    static std::string gName;
    return gName;
}

std::optional<unsigned>& givenProcessorCount() {
    static std::optional<unsigned> gCount;
    return gCount;
}

std::string currentProcessName() {
    if (!givenName().empty()) return givenName();
    std::array<char, PATH_MAX> path;
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    const std::string executable(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    return executable.substr(executable.rfind('/') + 1);
}

void writePascalString(const std::string& text, std::size_t most, unsigned char* buffer) {
    const std::size_t length = std::min(text.size(), most);
    buffer[0] = static_cast<unsigned char>(length);
    std::copy_n(text.begin(), length, buffer + 1);
}

/// Fills the caller's record. The record may be an older and shorter one,
/// so nothing after its length is read or written.
void describe(ProcessInfoRec& callers) {
    ProcessInfoRec record{};
    const std::size_t known = std::min<std::size_t>(callers.processInfoLength, sizeof record);
    std::memcpy(&record, &callers, known);

    const std::string name = currentProcessName();
    if (record.processName) writePascalString(name, 255, record.processName);
    if (record.processAppSpec) {
        *record.processAppSpec = {};
        writePascalString(name, sizeof record.processAppSpec->name - 1, record.processAppSpec->name);
    }
    ProcessInfoRec filled{};
    filled.processInfoLength = record.processInfoLength;
    filled.processName = record.processName;
    filled.processNumber = {0, kCurrentProcess};
    filled.processType = 'APPL';
    filled.processSignature = FourCharCode{0x3F3F3F3F}; // "????": an application without a signature
    filled.processAppSpec = record.processAppSpec;
    std::memcpy(&callers, &filled, known);
}

} // namespace

void macplatform::SetProcessName(const std::string& name) { givenName() = name; }
void macplatform::SetProcessorCount(std::optional<unsigned> count) { givenProcessorCount() = count; }

OSErr GetProcessInformation(const ProcessSerialNumber* process, ProcessInfoRec* info) {
    const auto show = [process] {
        return Texts{process ? std::to_string(process->lowLongOfPSN) : std::string("NULL")};
    };
    return MakePlatformCall("GetProcessInformation", show, [&]() -> OSErr {
        if (!process || !info || info->processInfoLength < sizeof info->processInfoLength) return paramErr;
        if (process->highLongOfPSN != 0 || process->lowLongOfPSN != kCurrentProcess) return procNotFound;
        describe(*info);
        return noErr;
    });
}

ItemCount MPProcessors() {
    return MakePlatformCall("MPProcessors", [] {
        const long count =
            givenProcessorCount() ? static_cast<long>(*givenProcessorCount()) : sysconf(_SC_NPROCESSORS_CONF);
        return static_cast<ItemCount>(std::max(count, 1L));
    });
}
