// The main entry and the exported steps: selector, message, parameter block, and the alerts and the error bit
// of a rejected call.

#include "PlugIn.h"
#include "support/SendMessage.h"

#include <csignal>
#include <cstdlib>
#include <dlfcn.h>

namespace plugin {

namespace {

bool gIsInMain = false;
bool gIsStopSeen = false;

bool isSelector(std::uint16_t selector) { return selector == 1000; }

void setErrorBit(Block& block) { block.SetFlags(block.Flags() | 1); }

void showStopAlert() {
    if (Is("StopAlertMissing")) return;
    gIsStopSeen = StopAlert(Is("OtherStopAlert") ? 5001 : 5000, nullptr) == -1;
    if (Is("StopAlertTwice")) StopAlert(5000, nullptr);
    if (Is("RejectedStepStores")) SetText(kUpdater, "InstallStatus", "refused");
}

void refuseMain(Block& block) {
    if (Is("AlertInMain")) ShowAlert();
    if (Is("ErrorBitsCleared")) block.SetFlags(0);
    if (!Is("ErrorBitMissingInMain")) setErrorBit(block);
    if (Is("RejectedCallStores")) StoreInterval(0);
}

void refuseStep(Block& block) {
    ShowAlert();
    showStopAlert();
    if (Is("StepFlagsReplaced")) block.SetFlags(0);
    if (Is("ErrorBitMissingInSteps")) return;
    if (Is("ErrorBitForStop") && gIsStopSeen && block.Message() == 3) return;
    setErrorBit(block);
}

void beginEvent(Block& block) {
    static int gEvents = 0;
    if (++gEvents > 30 && Is("MemoryGrows")) NewText("one more");
    if (Is("Crash") && block.Message() == 2 && block.Product() == 3500) std::raise(SIGSEGV);
    if (Is("FunctionBlockChanged")) ChangeFunctionBlock();
    if (Is("ScratchInBlock")) block.Bytes()[12] = 1;
    if (Is("ScratchBehindBlock")) block.Bytes()[614] = 1;
    if (Is("ScratchBeforeBlock")) block.Bytes()[-1] = 1;
    if (Is("HostFieldRead") && block.Bytes()[100] != 0) setErrorBit(block);
    if (Is("ErrorBitOnSuccess") && block.Product() == 5000) setErrorBit(block);
    if (Is("AlignmentAssumed") && reinterpret_cast<std::uintptr_t>(block.Bytes()) % 2 != 0)
        setErrorBit(block);
    if (Is("AlertOnUnknownProduct") && block.Product() == 1234 && block.Language() == 0) showStopAlert();
    NoteInstance();
}

bool acceptEvent(char* bytes) {
    if (!bytes && !Is("NullBlockRead")) return false;
    Block block(bytes);
    const bool isAccepted = isSelector(block.Selector());
    isAccepted ? beginEvent(block) : refuseStep(block);
    return isAccepted;
}

} // namespace

bool Is(const char* fault) {
    Dl_info executable{};
    if (dladdr(&gIsInMain, &executable) == 0) std::abort();
    return std::strcmp(std::strrchr(executable.dli_fname, '/') + 1, fault) == 0;
}

void Main(char* bytes) {
    Block block(bytes);
    if (!isSelector(block.Selector())) return refuseMain(block);
    const int message = block.Message();
    gIsInMain = true;
    if (message == 2 || (message == 3 && Is("BothStepsOnPostInstall"))) PreInstall(bytes);
    if (message == 3 || (message == 2 && Is("BothStepsOnPreInstall"))) PostInstall(bytes);
    if (message > 3 && Is("OtherMessageAccepted")) PostInstall(bytes);
    gIsInMain = false;
}

void ShowAlert() {
    if (Is("AlertMissing")) return;
    if (Is("CrashInAlert")) std::raise(SIGABRT);
    const CFStringRef text = NewText("Unable to set post install option keys.");
    const id alert = NewAlert();
    Send<void>(alert, "setMessageText:", text);
    if (text) CFRelease(text);
    if (Is("AlertWithChoice")) {
        Send(alert, "addButtonWithTitle:", CFSTR("OK"));
        Send(alert, "addButtonWithTitle:", CFSTR("Cancel"));
    }
    Send<long>(alert, "runModal");
    Send<void>(alert, "release");
}

const Product* Find(std::int32_t code) {
    static const struct {
        std::int32_t code;
        Product product;
    } products[] = {{1400, {"com.korvane.audioplugins.Tamblor", "Tamblor"}},
                    {3100, {"com.korvane.audioapps.Restora", "Korvane Restora"}},
                    {3500, {"com.korvane.audioplugins.Meridian4", "Meridian4"}},
                    {5200, {"com.korvane.audioplugins.Gildmark", "Gildmark"}},
                    {5100, {"com.korvane.audioplugins.Larynth", "Larynth"}},
                    {5000, {"com.korvane.tonecleanser", "TCL"}},
                    {4900, {"com.korvane.audioplugins.Fusewright", "Fusewright"}}};
    if (Is("LowWordOfProduct") && (code & 0xFFFF) == 4900) code = 4900;
    for (const auto& one : products) {
        if (one.code == code) return &one.product;
    }
    return nullptr;
}

} // namespace plugin

using namespace plugin;

extern "C" {
[[gnu::visibility("default")]] void PreInstall(char* bytes) {
    if (!acceptEvent(bytes) || (Is("StepsWithoutMessage") && !gIsInMain)) return;
    if (const Product* product = Find(Block(bytes).Product())) StoreVersion(*product);
}

[[gnu::visibility("default")]] void PostInstall(char* bytes) {
    if (!acceptEvent(bytes)) return;
    const Block block(bytes);
    const Product* const product = Find(block.Product());
    if (product) {
        SetInterval(*product);
        StoreLanguage(*product, block.Language());
    } else if (Is("UnknownProductStored")) {
        SetText("com.korvane.unknown", "Lang", "en");
    }
    SetFolderFlags(product != nullptr);
    LeaveTraces();
    SetIconFlags();
}
}
