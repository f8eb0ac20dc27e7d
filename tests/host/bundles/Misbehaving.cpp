// A plug-in that does to its host whatever the product code orders.

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <objc/message.h>
#include <objc/runtime.h>

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

enum Order : std::int32_t {
    Nothing = 0,
    Crash = 1,
    Hang = 2,
    ThrowException = 3,
    ThrowNumber = 4,
    Exit = 5,
    SetErrorBit = 6,
    WriteBesideErrorFlags = 7,
    Print = 8,
    LeaveProcessBehind = 9,
    CloseEverything = 10,
    SignalHost = 11,
    AskYesNo = 12,
    AskForEver = 13,
    LeakString = 14,
    ChangeFiles = 15,
    WriteBrokenList = 16,
    ReadStandardInput = 17,
    AskButtons = 18,
    AskOddTitles = 19,
    ShowStopAlert = 20,
};

template <typename Result, typename... Arguments>
Result Send(id receiver, const char* selector, Arguments... arguments) {
    using Function = Result (*)(id, SEL, Arguments...);
    return reinterpret_cast<Function>(&objc_msgSend)(receiver, sel_registerName(selector), arguments...);
}

/// 1000 for the first button, 1001 for the second, ...
int Ask(const char* message, const std::vector<const char*>& titles) {
    const auto text = [](const char* bytes) {
        return CFStringCreateWithCString(kCFAllocatorDefault, bytes, kCFStringEncodingUTF8);
    };
    const id alert = Send<id>(Send<id>(reinterpret_cast<id>(objc_getClass("NSAlert")), "alloc"), "init");
    const CFStringRef shown = text(message);
    Send<void>(alert, "setMessageText:", shown);
    CFRelease(shown);
    for (const char* title : titles) {
        const CFStringRef button = text(title);
        Send<id>(alert, "addButtonWithTitle:", button);
        CFRelease(button);
    }
    const int answer = static_cast<int>(Send<long>(alert, "runModal"));
    Send<void>(alert, "release");
    return answer;
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

void Deliver(char* block) {
    std::int32_t order = 0;
    std::memcpy(&order, block + 4, sizeof order);
    switch (order) {
    case Crash:
        std::raise(SIGSEGV);
        break;
    case Hang:
        WaitForEver();
    case ThrowException:
        throw std::runtime_error("no good");
    case ThrowNumber:
        throw 42;
    case Exit:
        _exit(7);
    case SetErrorBit:
        SetErrorFlags(block, 1);
        break;
    case WriteBesideErrorFlags:
        block[20] = block[613] = 'x';
        break;
    case Print:
        std::puts("printed by the bundle");
        std::fflush(stdout);
        break;
    case LeaveProcessBehind:
        if (fork() == 0) {
            setsid(); // out of the host's reach, but for what the kernel knows of its ancestors
            if (fork() == 0) WaitForEver();
            _exit(0);
        }
        break;
    case CloseEverything:
        for (int i = 0; i < 1024; ++i) close(i);
        break;
    case SignalHost:
        kill(getppid(), SIGTERM);
        WaitForEver();
    case AskYesNo:
        SetErrorFlags(block, Ask("Go on?", {"Yes", "No"}) == 1001 ? 0x10000 : 0);
        break;
    case AskForEver:
        while (true) Ask("Go on?", {"Yes", "No"});
    case LeakString:
        CFStringCreateWithCString(kCFAllocatorDefault, "left behind", kCFStringEncodingUTF8);
        break;
    case ChangeFiles:
        Write("/Users/new \x1B.txt", "new");
        chmod("/Library/old.txt", 0600);
        std::remove("/Library/gone.txt");
        break;
    case WriteBrokenList:
        Write("/Library/Preferences/com.example.broken.plist", "not a list");
        break;
    case ReadStandardInput:
        SetErrorFlags(block, std::getchar() == EOF ? 0 : 1);
        break;
    case AskButtons: {
        std::vector<const char*> titles{"OK", "Cancel", "Retry", "Cancel"};
        titles.resize(static_cast<unsigned char>(block[610]), "Again");
        SetErrorFlags(block, static_cast<std::uint32_t>(Ask("Go?", titles) - 999) << 16);
        break;
    }
    case AskOddTitles: {
        const char* const message = "--version <b>&amp;</b>\n\\x5F $(false) \x1B";
        const int answer = Ask(message, {"gtk-ok", "A_B:7", "x!y!z", "--help"});
        SetErrorFlags(block, static_cast<std::uint32_t>(answer - 999) << 16);
        break;
    }
    case ShowStopAlert:
        SetErrorFlags(block, static_cast<std::uint32_t>(StopAlert(5000, nullptr)) << 16);
        break;
    default:
        break;
    }
}

struct FunctionBlock {
    void* reserved;
    HRESULT (*queryInterface)(void*, REFIID, LPVOID*);
    ULONG (*addReference)(void*);
    ULONG (*release)(void*);
    void (*deliver)(char*);
};

HRESULT QueryInterface(void* self, REFIID, LPVOID* result) {
    *result = self;
    return S_OK;
}
HRESULT RefuseInterface(void*, REFIID, LPVOID* result) {
    *result = nullptr;
    return E_NOINTERFACE;
}
ULONG CountNothing(void*) { return 1; }

FunctionBlock goodBlock = {nullptr, &QueryInterface, &CountNothing, &CountNothing, &Deliver};
FunctionBlock refusingBlock = {nullptr, &RefuseInterface, &CountNothing, &CountNothing, &Deliver};
FunctionBlock* good = &goodBlock;
FunctionBlock* refusing = &refusingBlock;

} // namespace

extern "C" {
[[gnu::visibility("default")]] void* Make(CFAllocatorRef, CFUUIDRef) { return &good; }
[[gnu::visibility("default")]] void* MakeRefusing(CFAllocatorRef, CFUUIDRef) { return &refusing; }
[[gnu::visibility("default")]] void* MakeNothing(CFAllocatorRef, CFUUIDRef) { return nullptr; }
[[gnu::visibility("default")]] void* MakeCrash(CFAllocatorRef, CFUUIDRef) { std::abort(); }
[[gnu::visibility("default")]] void PreInstall(char* block) { Deliver(block); }
}
