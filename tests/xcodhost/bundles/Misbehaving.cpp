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
    Nothing = 0, Crash = 1, Hang = 2, ThrowException = 3, ThrowNumber = 4, Exit = 5, SetErrorBit = 6,
    WriteBesideErrorFlags = 7, Print = 8, LeaveProcessBehind = 9, CloseEverything = 10, SignalHost = 11,
    AskYesNo = 12, AskForEver = 13, LeakString = 14, ChangeFiles = 15, WriteBrokenList = 16,
    ReadStandardInput = 17, AskButtons = 18, AskOddTitles = 19, ShowStopAlert = 20,
};
// clang-format on

/// 1 for the first button, 2 for the second, ...
std::uint32_t Ask(const char* message, const std::vector<const char*>& titles) {
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

void SetErrorFlags(char* block, std::uint32_t flags) { std::memcpy(block + 8, &flags, sizeof flags); }

void Write(const char* path, const char* text) {
    if (std::FILE* file = std::fopen(path, "w")) {
        std::fputs(text, file);
        std::fclose(file);
    }
}

[[noreturn]] void WaitForEver() {
    while (true) pause();
}

/// Out of the host's reach, but for what the kernel knows of its ancestors.
void LeaveAProcess() {
    if (fork() != 0) return;
    setsid();
    if (fork() == 0) WaitForEver();
    _exit(0);
}

void DoToTheHost(Order order) {
    if (order == Crash) std::raise(SIGSEGV);
    if (order == Hang) WaitForEver();
    if (order == ThrowException) throw std::runtime_error("no good");
    if (order == ThrowNumber) throw 42;
    if (order == Exit) _exit(7);
    if (order == Print) std::fflush((std::puts("printed by the bundle"), stdout));
    if (order == LeaveProcessBehind) LeaveAProcess();
    for (int i = 0; i < 1024 && order == CloseEverything; ++i) close(i);
    if (order == SignalHost) kill(getppid(), SIGTERM);
    if (order == SignalHost) WaitForEver();
    while (order == AskForEver) Ask("Go on?", {"Yes", "No"});
    if (order == LeakString) NewText("left behind");
    if (order == WriteBrokenList) Write("/Library/Preferences/com.example.broken.plist", "not a list");
    if (order == ChangeFiles) {
        Write("/Users/new \x1B.txt", "new");
        chmod("/Library/old.txt", 0600);
        std::remove("/Library/gone.txt");
    }
}

void DoToTheBlock(Order order, char* block) {
    std::vector<const char*> titles{"OK", "Cancel", "Retry", "Cancel"};
    titles.resize(order == AskButtons ? static_cast<unsigned char>(block[610]) : 0, "Again");
    const char* const odd = "--version <b>&amp;</b>\n\\x5F $(false) \x1B";
    if (order == SetErrorBit) SetErrorFlags(block, 1);
    if (order == WriteBesideErrorFlags) block[20] = block[613] = 'x';
    if (order == AskYesNo) SetErrorFlags(block, Ask("Go on?", {"Yes", "No"}) == 2 ? 0x10000 : 0);
    if (order == AskButtons) SetErrorFlags(block, Ask("Go?", titles) << 16);
    if (order == AskOddTitles) SetErrorFlags(block, Ask(odd, {"gtk-ok", "A_B:7", "x!y!z", "--help"}) << 16);
    if (order == ReadStandardInput) SetErrorFlags(block, std::getchar() == EOF ? 0 : 1);
    if (order == ShowStopAlert)
        SetErrorFlags(block, static_cast<std::uint32_t>(StopAlert(5000, nullptr)) << 16);
}

void Deliver(char* block) {
    Order order = Nothing;
    std::memcpy(&order, block + 4, sizeof order);
    DoToTheHost(order);
    DoToTheBlock(order, block);
}

HRESULT RefuseInterface(void*, REFIID, LPVOID* result) {
    *result = nullptr;
    return E_NOINTERFACE;
}
PlugInFunctions goodBlock = {nullptr, &GiveInterface, &CountNothing, &CountNothing, &Deliver};
PlugInFunctions refusingBlock = {nullptr, &RefuseInterface, &CountNothing, &CountNothing, &Deliver};
PlugInFunctions* good = &goodBlock;
PlugInFunctions* refusing = &refusingBlock;

} // namespace

extern "C" {
[[gnu::visibility("default")]] void* Make(CFAllocatorRef, CFUUIDRef) { return &good; }
[[gnu::visibility("default")]] void* MakeRefusing(CFAllocatorRef, CFUUIDRef) { return &refusing; }
[[gnu::visibility("default")]] void* MakeNothing(CFAllocatorRef, CFUUIDRef) { return nullptr; }
[[gnu::visibility("default")]] void* MakeCrash(CFAllocatorRef, CFUUIDRef) { std::abort(); }
[[gnu::visibility("default")]] void PreInstall(char* block) { Deliver(block); }
}
