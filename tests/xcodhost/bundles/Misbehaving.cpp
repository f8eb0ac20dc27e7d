// A plug-in with faults. The product code of a call selects the fault.

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
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// clang-format off
enum Fault : std::int32_t {
    kNothing = 0, kCrash = 1, kHang = 2, kThrowException = 3, kThrowNumber = 4, kExit = 5, kSetErrorBit = 6,
    kWriteBesideErrorFlags = 7, kPrint = 8, kLeaveProcessBehind = 9, kCloseEverything = 10, kSignalHost = 11,
    kAskYesNo = 12, kAskForEver = 13, kLeakString = 14, kChangeFiles = 15, kWriteBrokenPropertyList = 16,
    kReadStandardInput = 17, kAskButtons = 18, kAskOddTitles = 19, kShowStopAlert = 20,
    kAskLongText = 21,
};
// clang-format on

/// Shows an alert. Returns 1 for the first button, 2 for the second, and so on.
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
    const long result = Send<long>(alert, "runModal");
    Send<void>(alert, "release");
    return static_cast<std::uint32_t>(result - 999);
}

/// Returns a text with a line of many words, one without spaces, and 30 short lines.
std::string longText() {
    std::string text(1, 'x');
    for (int i = 0; i < 150; ++i) text += "\xC3\xA9";
    for (int i = 0; i < 50; ++i) text.insert(0, i == 0 ? "words.\n" : "a word, ");
    for (int i = 0; i < 30; ++i) text += "\nline";
    return text;
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

/// Starts a process that is an orphan in another session: only the kernel's records connect the process to
/// the host.
void leaveAProcess() {
    if (fork() != 0) return;
    setsid();
    if (fork() == 0) waitForEver();
    _exit(0);
}

void doToTheHost(Fault fault) {
    if (fault == kCrash) std::raise(SIGSEGV);
    if (fault == kHang) waitForEver();
    if (fault == kThrowException) throw std::runtime_error("no good");
    if (fault == kThrowNumber) throw 42;
    if (fault == kExit) _exit(7);
    if (fault == kPrint) std::fflush((std::puts("printed by the bundle"), stdout));
    if (fault == kLeaveProcessBehind) leaveAProcess();
    for (int i = 0; i < 1024 && fault == kCloseEverything; ++i) close(i);
    if (fault == kSignalHost) kill(getppid(), SIGTERM);
    if (fault == kSignalHost) waitForEver();
    while (fault == kAskForEver) ask("Go on?", {"Yes", "No"});
    if (fault == kLeakString) NewText("left behind");
    if (fault == kWriteBrokenPropertyList)
        writeFile("/Library/Preferences/com.example.broken.plist", "not a list");
    if (fault == kChangeFiles) {
        writeFile("/Users/new \x1B.txt", "new");
        chmod("/Library/old.txt", 0600);
        std::remove("/Library/gone.txt");
        if (std::remove("/Users/link") == 0) symlink("/elsewhere", "/Users/link");
    }
}

void doToTheBlock(Fault fault, char* block) {
    std::vector<const char*> titles{"OK", "Cancel", "Retry", "Cancel"};
    titles.resize(fault == kAskButtons ? static_cast<unsigned char>(block[610]) : 0, "Again");
    const char* const odd = "--version <b>&amp;</b>\n\\x5F $(false) \x1B";
    if (fault == kSetErrorBit) setErrorFlags(block, 1);
    if (fault == kWriteBesideErrorFlags) block[20] = block[613] = 'x';
    if (fault == kAskYesNo) setErrorFlags(block, ask("Go on?", {"Yes", "No"}) == 2 ? 0x10000 : 0);
    if (fault == kAskButtons) setErrorFlags(block, ask("Go?", titles) << 16);
    if (fault == kAskOddTitles) setErrorFlags(block, ask(odd, {"gtk-ok", "A_B:7", "x!y!z", "--help"}) << 16);
    if (fault == kAskLongText) ask(longText().c_str(), {"OK"});
    if (fault == kReadStandardInput) setErrorFlags(block, std::getchar() == EOF ? 0 : 1);
    if (fault == kShowStopAlert)
        setErrorFlags(block, static_cast<std::uint32_t>(StopAlert(5000, nullptr)) << 16);
}

void deliver(char* block) {
    Fault fault = kNothing;
    std::memcpy(&fault, block + 4, sizeof fault);
    doToTheHost(fault);
    doToTheBlock(fault, block);
}

HRESULT refuseInterface(void*, REFIID, LPVOID* result) {
    *result = nullptr;
    return E_NOINTERFACE;
}
PlugInFunctions gGoodBlock = {nullptr, &GiveInterface, &IgnoreReference, &IgnoreReference, &deliver};
PlugInFunctions gRefusingBlock = {nullptr, &refuseInterface, &IgnoreReference, &IgnoreReference, &deliver};
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
