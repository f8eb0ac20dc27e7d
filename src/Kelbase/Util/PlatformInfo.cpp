#include <Kelbase/Util/PlatformInfo.h>

#include <Kelbase/Util/CFString.h>

#include <Carbon/Carbon.h>

namespace Util {

namespace {

// For an implementation of the call stack. Nothing calls these functions yet.

[[maybe_unused]] String undecorateFunctionName(const String& name) { return name; }

// Always inlined, so that the frame is that of the caller.
[[maybe_unused, gnu::always_inline]] inline void* getCallingStackFrame(void*) {
    return __builtin_frame_address(0);
}

} // namespace

unsigned int GetNumLogicalProcessors() {
    const auto count = static_cast<unsigned int>(MPProcessors());
    return count == 0 ? 1 : count;
}

unsigned long long GetTotalHeapAllocatedBytes() { return 0; }

String GetCurrentProcessName() {
    const ProcessSerialNumber current = {0, kCurrentProcess};
    unsigned char name[256] = {};
    ProcessInfoRec info = {};
    info.processInfoLength = sizeof info;
    info.processName = name;
    if (GetProcessInformation(&current, &info) != noErr) return String();

    const CFString text(CFStringCreateWithPascalString(kCFAllocatorDefault, name, kCFStringEncodingUTF8),
                        CFString::kReleaseOnDestroy);
    return text.ToString();
}

void GetCallStack(unsigned int, unsigned int* frames) {
    if (frames) frames[0] = 0;
}

bool ParseMapFile(std::map<unsigned int, MapFileFunctionInfo>&, const FilePath&, unsigned int) {
    return false;
}

bool MapFileLookupReturnAddress(ReturnAddressInfo&, unsigned int,
                                const std::map<unsigned int, MapFileFunctionInfo>&) {
    return false;
}

} // namespace Util
