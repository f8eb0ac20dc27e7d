// A plug-in that does to its host whatever the product code orders.

#include "support/NewText.h"
#include "support/PlugInFunctions.h"
#include "support/SendMessage.h"

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// clang-format off
enum Order : std::int32_t {
    kNothing = 0, kCrash = 1, kHang = 2, kThrowException = 3, kThrowNumber = 4, kExit = 5, kSetErrorBit = 6,
    kWriteBesideErrorFlags = 7, kPrint = 8, kLeaveProcessBehind = 9, kCloseEverything = 10, kSignalHost = 11,
    kAskYesNo = 12, kAskForEver = 13, kLeakString = 14, kChangeFiles = 15, kWriteBrokenList = 16,
    kReadStandardInput = 17, kAskButtons = 18, kAskOddTitles = 19, kShowStopAlert = 20,
};
// clang-format on

/// 1 for the first button, 2 for the second, ...
std::uint32_t ask(const char* message, const std::vector<const char*>& titles) {
    const id alert = NewAlert();
    const CFStringRef shown = NewText(message);
    Send<void>(alert, "setMessageText:", shown);
    CFRelease(shown);
    for (const char* title : titles) {
        const CFStringRef button = NewText(title);
        Send(alert, "addButtonWithTitle:", button);
        CFRelease(button);
    }
    const long answer = Send<long>(alert, "runModal");
    Send<void>(alert, "release");
    return static_cast<std::uint32_t>(answer - 999);
}

void setErrorFlags(char* block, std::uint32_t flags) { std::memcpy(block + 8, &flags, sizeof flags); }

void writeFile(const char* path, const char* text) {
    if (std::FILE* file = std::fopen(path, "w")) {
        std::fputs(text, file);
        std::fclose(file);
    }
}

[[noreturn]] void waitForEver() {
    while (true) pause();
}

/// Out of the host's reach, but for what the kernel knows of its ancestors.
void leaveAProcess() {
    if (fork() != 0) return;
    setsid();
    if (fork() == 0) waitForEver();
    _exit(0);
}

void doToTheHost(Order order) {
    if (order == kCrash) std::raise(SIGSEGV);
    if (order == kHang) waitForEver();
    if (order == kThrowException) throw std::runtime_error("no good");
    if (order == kThrowNumber) throw 42;
    if (order == kExit) _exit(7);
    if (order == kPrint) std::fflush((std::puts("printed by the bundle"), stdout));
    if (order == kLeaveProcessBehind) leaveAProcess();
    for (int i = 0; i < 1024 && order == kCloseEverything; ++i) close(i);
    if (order == kSignalHost) kill(getppid(), SIGTERM);
    if (order == kSignalHost) waitForEver();
    while (order == kAskForEver) ask("Go on?", {"Yes", "No"});
    if (order == kLeakString) NewText("left behind");
    if (order == kWriteBrokenList) writeFile("/Library/Preferences/com.example.broken.plist", "not a list");
    if (order == kChangeFiles) {
        writeFile("/Users/new \x1B.txt", "new");
        chmod("/Library/old.txt", 0600);
        std::remove("/Library/gone.txt");
    }
}

void doToTheBlock(Order order, char* block) {
    std::vector<const char*> titles{"OK", "Cancel", "Retry", "Cancel"};
    titles.resize(order == kAskButtons ? static_cast<unsigned char>(block[610]) : 0, "Again");
    const char* const odd = "--version <b>&amp;</b>\n\\x5F $(false) \x1B";
    if (order == kSetErrorBit) setErrorFlags(block, 1);
    if (order == kWriteBesideErrorFlags) block[20] = block[613] = 'x';
    if (order == kAskYesNo) setErrorFlags(block, ask("Go on?", {"Yes", "No"}) == 2 ? 0x10000 : 0);
    if (order == kAskButtons) setErrorFlags(block, ask("Go?", titles) << 16);
    if (order == kAskOddTitles) setErrorFlags(block, ask(odd, {"gtk-ok", "A_B:7", "x!y!z", "--help"}) << 16);
    if (order == kReadStandardInput) setErrorFlags(block, std::getchar() == EOF ? 0 : 1);
    if (order == kShowStopAlert)
        setErrorFlags(block, static_cast<std::uint32_t>(StopAlert(5000, nullptr)) << 16);
}

void deliver(char* block) {
    Order order = kNothing;
    std::memcpy(&order, block + 4, sizeof order);
    doToTheHost(order);
    doToTheBlock(order, block);
}

HRESULT refuseInterface(void*, REFIID, LPVOID* result) {
    *result = nullptr;
    return E_NOINTERFACE;
}
PlugInFunctions gGoodBlock = {nullptr, &GiveInterface, &CountNothing, &CountNothing, &deliver};
PlugInFunctions gRefusingBlock = {nullptr, &refuseInterface, &CountNothing, &CountNothing, &deliver};
PlugInFunctions* gGood = &gGoodBlock;
PlugInFunctions* gRefusing = &gRefusingBlock;

} // namespace

extern "C" {
[[gnu::visibility("default")]] void* Make(CFAllocatorRef, CFUUIDRef) { return &gGood; }
[[gnu::visibility("default")]] void* MakeRefusing(CFAllocatorRef, CFUUIDRef) { return &gRefusing; }
[[gnu::visibility("default")]] void* MakeNothing(CFAllocatorRef, CFUUIDRef) { return nullptr; }
[[gnu::visibility("default")]] void* MakeCrash(CFAllocatorRef, CFUUIDRef) { std::abort(); }
[[gnu::visibility("default")]] void PreInstall(char* block) { deliver(block); }
}
