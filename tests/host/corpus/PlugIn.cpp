#include "PlugIn.h"

#include <objc/message.h>
#include <objc/runtime.h>

#include <cstdio>
#include <unistd.h>

#define REPLACEABLE [[gnu::weak]]

namespace plugin {

namespace {

/// A text that lives as long as this.
class Text {
public:
    explicit Text(const std::string& text)
        : reference(CFStringCreateWithCString(kCFAllocatorDefault, text.c_str(), kCFStringEncodingUTF8)) {}
    ~Text() {
        if (reference) Release(reference);
    }
    CFStringRef reference;
};

CFUUIDRef Constant(const unsigned char (&b)[16]) {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, b[0], b[1], b[2], b[3], b[4], b[5], b[6], b[7],
                                          b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
}

constexpr unsigned char kType[16] = {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2,
                                     0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8};
constexpr unsigned char kHost[16] = {0x00, 0xD5, 0xFB, 0xFE, 0x3D, 0x3D, 0x40, 0xE2,
                                     0x9D, 0xCB, 0x92, 0xED, 0x69, 0x58, 0x34, 0xF8};
constexpr unsigned char kUnknown[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};

HRESULT Query(void* self, REFIID identifier, LPVOID* place) {
    if (!IsInterface(identifier)) return Refuse(place);
    AddReference(static_cast<Instance*>(self));
    *place = self;
    return S_OK;
}

ULONG AddOne(void* self) { return static_cast<ULONG>(Count(static_cast<Instance*>(self), 1)); }
ULONG TakeOne(void* self) {
    auto* const instance = static_cast<Instance*>(self);
    const SInt32 count = Count(instance, -1);
    if (count == 0) Dispose(instance);
    return static_cast<ULONG>(count);
}

void Main(char* bytes) {
    Block block(bytes);
    if (!IsSelector(block.Selector())) return RefuseMain(block);
    Dispatch(block);
}

bool IsAccepted(char* bytes) {
    if (IsNull(bytes)) return false;
    Block block(bytes);
    if (IsSelector(block.Selector())) {
        AtEvent(block);
        return true;
    }
    ShowAlert();
    ShowStopAlert();
    SetErrorBit(block);
    return false;
}

template <typename Result, typename... Arguments>
Result Send(id receiver, const char* selector, Arguments... arguments) {
    using Function = Result (*)(id, SEL, Arguments...);
    return reinterpret_cast<Function>(&objc_msgSend)(receiver, sel_registerName(selector), arguments...);
}

} // namespace

Functions functions = {nullptr, &Query, &AddOne, &TakeOne, &Main};

REPLACEABLE bool IsPlugInType(CFUUIDRef type) { return CFEqual(type, Constant(kType)); }

REPLACEABLE bool IsAllocator(CFAllocatorRef) { return true; }
REPLACEABLE Instance* Allocate() { return reinterpret_cast<Instance*>(NewPtr(sizeof(Instance))); }
REPLACEABLE void Dispose(Instance* instance) { DisposePtr(reinterpret_cast<Ptr>(instance)); }

REPLACEABLE bool IsInterface(REFIID identifier) {
    const CFUUIDRef asked = CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, identifier);
    const bool isKnown = asked && (CFEqual(asked, Constant(kHost)) || CFEqual(asked, Constant(kUnknown)));
    if (asked) Release(asked);
    return isKnown;
}
REPLACEABLE HRESULT Refuse(LPVOID* place) {
    *place = nullptr;
    return E_NOINTERFACE;
}
REPLACEABLE void AddReference(Instance* instance) { instance->block->AddRef(instance); }
REPLACEABLE SInt32 Count(Instance* instance, int change) { return instance->count += change; }

REPLACEABLE bool IsNull(const char* block) { return !block; }
REPLACEABLE void AtEvent(Block&) {}
REPLACEABLE bool IsSelector(std::uint16_t selector) { return selector == 1000; }
REPLACEABLE void RefuseMain(Block& block) { SetErrorBit(block); }
REPLACEABLE void SetErrorBit(Block& block) { block.SetFlags(block.Flags() | 1); }
REPLACEABLE void ShowAlert() {
    const Text text("Unable to set post install option keys.");
    const id alert = Send<id>(Send<id>(reinterpret_cast<id>(objc_getClass("NSAlert")), "alloc"), "init");
    Send<void>(alert, "setMessageText:", text.reference);
    AddButtons(alert);
    Send<long>(alert, "runModal");
    Send<void>(alert, "release");
}
REPLACEABLE void AddButtons(void*) {}
void AddButton(void* alert, CFStringRef title) {
    Send<id>(static_cast<id>(alert), "addButtonWithTitle:", title);
}
REPLACEABLE void ShowStopAlert() { StopAlert(5000, nullptr); }

REPLACEABLE const Product* Find(std::int32_t code) {
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
    for (const auto& one : products) {
        if (one.code == code) return &one.product;
    }
    return nullptr;
}

REPLACEABLE void StoreVersion(const Product& product) {
    SetText(kUpdater, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.73");
    Synchronise(kUpdater);
}

REPLACEABLE const char* Tag(std::int32_t language) {
    switch (language) {
    case 1:
        return "fr";
    case 2:
        return "de";
    case 3:
        return "it";
    case 6:
        return "es";
    case 11:
        return "ja";
    default:
        return "en";
    }
}

REPLACEABLE bool ReadStatus(bool& isEnabled) {
    if (access(kStatusFile, F_OK) != 0) return false;
    std::FILE* const file = std::fopen(kStatusFile, "rb");
    if (!file) throw Unreadable();
    char start[14] = {};
    const std::size_t count = std::fread(start, 1, sizeof start, file);
    std::fclose(file);
    isEnabled = count == sizeof start && std::memcmp(start, "UpdatesEnabled", sizeof start) == 0;
    return true;
}

REPLACEABLE void SetInterval(const Product&) {
    int interval = 2;
    try {
        bool isEnabled = false;
        if (ReadStatus(isEnabled)) interval = isEnabled ? 2 : 0;
    } catch (const Unreadable&) {
        StoreFailure();
    }
    StoreInterval(interval);
}

REPLACEABLE void StoreInterval(int interval) {
    const CFNumberRef number = CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &interval);
    if (!number) return;
    const Text domain(kUpdater), key("UpdateInterval");
    if (domain.reference && key.reference) {
        CFPreferencesSetValue(key.reference, number, domain.reference, kCFPreferencesAnyUser,
                              kCFPreferencesCurrentHost);
    }
    Release(number);
    Synchronise(kUpdater);
}
REPLACEABLE void StoreFailure() {
    SetText(kUpdater, "InstallStatus", "Error opening file");
    Synchronise(kUpdater);
}
REPLACEABLE void StoreLanguage(const Product& product, const char* tag) {
    SetText(product.domain, "Lang", tag);
    Synchronise(product.domain);
}

REPLACEABLE void DressFolder() { Dress("/Applications/Korvane", false, true); }
REPLACEABLE void DressIcon() { Dress("/Applications/Korvane/Icon\r", true, false); }
REPLACEABLE std::uint16_t Dressed(std::uint16_t flags, bool invisible, bool customIcon) {
    return static_cast<std::uint16_t>((flags & ~0x4400) | (invisible ? 0x4000 : 0) |
                                      (customIcon ? 0x0400 : 0));
}

REPLACEABLE void SetText(const char* domain, const std::string& key, const char* text) {
    const Text domainText(domain), keyText(key), value(text);
    if (!domainText.reference || !keyText.reference || !value.reference) return;
    CFPreferencesSetValue(keyText.reference, value.reference, domainText.reference, kCFPreferencesAnyUser,
                          kCFPreferencesCurrentHost);
}
REPLACEABLE void Synchronise(const char* domain) {
    const Text text(domain);
    if (text.reference)
        CFPreferencesSynchronize(text.reference, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
}
REPLACEABLE void Release(CFTypeRef object) { CFRelease(object); }

REPLACEABLE void Dress(const char* path, bool invisible, bool customIcon) {
    FSRef item;
    if (FSPathMakeRef(reinterpret_cast<const UInt8*>(path), &item, nullptr) != noErr) return;
    FSCatalogInfo catalog = {};
    if (FSGetCatalogInfo(&item, kFSCatInfoFinderInfo, &catalog, nullptr, nullptr, nullptr) != noErr) return;
    FileInfo finder;
    std::memcpy(&finder, catalog.finderInfo, sizeof finder);
    finder.finderFlags = Dressed(finder.finderFlags, invisible, customIcon);
    std::memcpy(catalog.finderInfo, &finder, sizeof finder);
    FSSetCatalogInfo(&item, kFSCatInfoFinderInfo, &catalog);
}

} // namespace plugin

using namespace plugin;

extern "C" {
[[gnu::visibility("default")]] void PreInstall(char* bytes) {
    if (!IsAccepted(bytes)) return;
    if (const Product* product = Find(Block(bytes).Product())) StoreVersion(*product);
}

[[gnu::visibility("default")]] void PostInstall(char* bytes) {
    if (!IsAccepted(bytes)) return;
    const Block block(bytes);
    if (const Product* product = Find(block.Product())) {
        SetInterval(*product);
        StoreLanguage(*product, Tag(block.Language()));
    }
    DressFolder();
    DressIcon();
}

[[gnu::visibility("default")]] void* MyFactory(CFAllocatorRef allocator, CFUUIDRef type) {
    if (!IsAllocator(allocator) || !IsPlugInType(type)) return nullptr;
    Instance* const instance = Allocate();
    if (!instance) return nullptr;
    instance->block = &functions;
    instance->count = 1;
    return instance;
}
}

namespace plugin {
REPLACEABLE void Dispatch(Block& block) {
    if (block.Message() == 2) ::PreInstall(block.Bytes());
    if (block.Message() == 3) ::PostInstall(block.Bytes());
}
} // namespace plugin
