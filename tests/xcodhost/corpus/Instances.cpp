// What the installer holds on to: the factory's instances, their interfaces and references.

#include "PlugIn.h"

#include <set>

namespace plugin {

namespace {

struct Functions {
    IUNKNOWN_C_GUTS;
    void (*main)(char*);
};
extern Functions functions;

struct Instance {
    Functions* block;
    SInt32 count;
};

std::set<Instance*> instances;
Instance* newest = nullptr;
Instance* lastAsked = nullptr;
Instance* inUse = nullptr;

CFUUIDRef Constant(const unsigned char (&b)[16]) {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, b[0], b[1], b[2], b[3], b[4], b[5], b[6], b[7],
                                          b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
}

constexpr unsigned char kType[16] = {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2,
                                     0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8};
constexpr unsigned char kHost[16] = {0x00, 0xD5, 0xFB, 0xFE, 0x3D, 0x3D, 0x40, 0xE2,
                                     0x9D, 0xCB, 0x92, 0xED, 0x69, 0x58, 0x34, 0xF8};
constexpr unsigned char kUnknown[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};

bool IsPlugInType(CFUUIDRef type) {
    return !Is("NoType") && (CFEqual(type, Constant(kType)) || Is("AnyTypeAccepted"));
}

bool IsInterface(REFIID identifier) {
    const CFUUIDRef asked = CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, identifier);
    if (Is("QueryTakesMemoryForGranted")) CFUUIDGetUUIDBytes(asked);
    const bool isKnown = asked && ((CFEqual(asked, Constant(kHost)) && !Is("UnknownInterfaceOnly")) ||
                                   (CFEqual(asked, Constant(kUnknown)) && !Is("HostInterfaceOnly")));
    if (asked) CFRelease(asked);
    return isKnown || Is("AnyInterfaceGiven");
}

HRESULT Refuse(LPVOID* place) {
    if (Is("IdentifierLeaked")) CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, CFUUIDBytes{});
    if (Is("ReferenceForRefusal")) ++newest->count;
    if (!Is("PlaceNotCleared")) *place = nullptr;
    return Is("WrongInterfaceCode") ? static_cast<HRESULT>(0x80004005) : E_NOINTERFACE;
}

HRESULT Query(void* self, REFIID identifier, LPVOID* place) {
    if (!IsInterface(identifier)) return Refuse(place);
    auto* const instance = lastAsked = static_cast<Instance*>(self);
    if (Is("ReferenceBesideSlot")) {
        ++instance->count;
    } else if (!Is("NoReferenceForInterface")) {
        instance->block->AddRef(instance);
    }
    if (Is("TwoReferencesForInterface")) ++instance->count;
    *place = self;
    return S_OK;
}

SInt32& CountOf(Instance* instance) {
    static SInt32 shared = 1;
    return Is("SharedCount") ? shared : instance->count;
}

Instance* New() {
    auto* const instance =
        Is("HeapInstance") ? new Instance : reinterpret_cast<Instance*>(NewPtr(sizeof(Instance)));
    if (!instance && !Is("MemoryTakenForGranted")) return nullptr;
    instance->block = &functions;
    CountOf(instance) = 1;
    instances.insert(instance);
    return newest = instance;
}

void Dispose(Instance* instance) {
    instances.erase(instance);
    if (instance == lastAsked) lastAsked = nullptr;
    if (Is("OtherInstancesReset")) {
        for (Instance* const other : instances) other->count = 0;
    }
    if (Is("HeapInstance")) {
        delete instance;
    } else if (!Is("RecordNeverFreed")) {
        DisposePtr(reinterpret_cast<Ptr>(instance));
    }
}

ULONG Count(void* self, int change) {
    auto* const instance = static_cast<Instance*>(self);
    SInt32 count = CountOf(instance) += change;
    if (Is("CountOf16Bits")) count = instance->count = static_cast<std::int16_t>(count);
    if (change < 0 && count == 0) Dispose(instance);
    if (Is("LastReleaseAnswersOne") && count == 0) return 1;
    return static_cast<ULONG>(Is("CountStartsAtZero") ? count - 1 : count);
}
ULONG AddOne(void* self) { return Count(self, 1); }
ULONG TakeOne(void* self) { return Count(self, -1); }

Functions functions = {nullptr, &Query, &AddOne, &TakeOne, &Main};

} // namespace

void ChangeFunctionBlock() { functions._reserved = &functions; }
void NoteInstance() { inUse = lastAsked; }
bool LacksItsInstance() { return inUse && inUse != lastAsked; }

} // namespace plugin

using namespace plugin;

extern "C" [[gnu::visibility("default")]] void* MyFactory(CFAllocatorRef allocator, CFUUIDRef type) {
    if (Is("DefaultAllocatorOnly") && allocator != kCFAllocatorDefault) return nullptr;
    if (Is("FirstSlotFilled")) ChangeFunctionBlock();
    return IsPlugInType(type) ? New() : nullptr;
}
