// The instances of the factory: their interfaces and reference counts.

#include "PlugIn.h"

#include <set>

namespace plugin {

namespace {

struct Functions {
    IUNKNOWN_C_GUTS;
    void (*main)(char*);
};
extern Functions gFunctions;

struct Instance {
    Functions* block;
    SInt32 count;
};

std::set<Instance*> gInstances;
Instance* gNewest = nullptr;
Instance* gLastAsked = nullptr;
Instance* gInUse = nullptr;

CFUUIDRef constant(const unsigned char (&b)[16]) {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, b[0], b[1], b[2], b[3], b[4], b[5], b[6], b[7],
                                          b[8], b[9], b[10], b[11], b[12], b[13], b[14], b[15]);
}

constexpr unsigned char kType[16] = {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2,
                                     0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8};
constexpr unsigned char kHost[16] = {0x00, 0xD5, 0xFB, 0xFE, 0x3D, 0x3D, 0x40, 0xE2,
                                     0x9D, 0xCB, 0x92, 0xED, 0x69, 0x58, 0x34, 0xF8};
constexpr unsigned char kUnknown[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};

bool isPlugInType(CFUUIDRef type) {
    return !Is("NoType") && (CFEqual(type, constant(kType)) || Is("AnyTypeAccepted"));
}

bool isInterface(REFIID identifier) {
    const CFUUIDRef asked = CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, identifier);
    if (Is("QueryIdentifierUnchecked")) CFUUIDGetUUIDBytes(asked);
    const bool isKnown = asked && ((CFEqual(asked, constant(kHost)) && !Is("UnknownInterfaceOnly")) ||
                                   (CFEqual(asked, constant(kUnknown)) && !Is("HostInterfaceOnly")));
    if (asked) CFRelease(asked);
    return isKnown || Is("AnyInterfaceGiven");
}

HRESULT refuse(LPVOID* place) {
    if (Is("IdentifierLeaked")) CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, CFUUIDBytes{});
    if (Is("ReferenceForUnsupportedInterface")) ++gNewest->count;
    if (!Is("PlaceNotCleared")) *place = nullptr;
    return Is("WrongInterfaceCode") ? static_cast<HRESULT>(0x80004005) : E_NOINTERFACE;
}

HRESULT query(void* self, REFIID identifier, LPVOID* place) {
    if (!isInterface(identifier)) return refuse(place);
    auto* const instance = gLastAsked = static_cast<Instance*>(self);
    if (Is("ReferenceBesideSlot")) {
        ++instance->count;
    } else if (!Is("NoReferenceForInterface")) {
        instance->block->AddRef(instance);
    }
    if (Is("TwoReferencesForInterface")) ++instance->count;
    *place = self;
    return S_OK;
}

SInt32& countOf(Instance* instance) {
    static SInt32 gShared = 1;
    return Is("SharedCount") ? gShared : instance->count;
}

Instance* newInstance() {
    auto* instance =
        Is("HeapInstance") ? new Instance : reinterpret_cast<Instance*>(NewPtr(sizeof(Instance)));
    if (!instance && Is("HeapWithoutMemory")) instance = new Instance;
    if (!instance && !Is("NewPtrUnchecked")) return nullptr;
    instance->block = &gFunctions;
    countOf(instance) = 1;
    gInstances.insert(instance);
    return gNewest = instance;
}

void dispose(Instance* instance) {
    gInstances.erase(instance);
    if (instance == gLastAsked) gLastAsked = nullptr;
    if (Is("OtherInstancesReset")) {
        for (Instance* const other : gInstances) other->count = 0;
    }
    if (Is("HeapInstance")) {
        delete instance;
    } else if (!Is("RecordNeverFreed")) {
        DisposePtr(reinterpret_cast<Ptr>(instance));
    }
}

ULONG changeCount(void* self, int change) {
    auto* const instance = static_cast<Instance*>(self);
    SInt32 count = countOf(instance) += change;
    if (Is("CountOf16Bits")) count = instance->count = static_cast<std::int16_t>(count);
    if (change < 0 && count == 0) dispose(instance);
    if (Is("LastReleaseReturnsOne") && count == 0) return 1;
    return static_cast<ULONG>(Is("CountStartsAtZero") ? count - 1 : count);
}
ULONG addOne(void* self) { return changeCount(self, 1); }
ULONG removeOne(void* self) { return changeCount(self, -1); }

Functions gFunctions = {nullptr, &query, &addOne, &removeOne, &Main};

} // namespace

void ChangeFunctionBlock() { gFunctions._reserved = &gFunctions; }
void NoteInstance() { gInUse = gLastAsked; }
bool LacksItsInstance() { return gInUse && gInUse != gLastAsked; }

} // namespace plugin

using namespace plugin;

extern "C" [[gnu::visibility("default")]] void* MyFactory(CFAllocatorRef allocator, CFUUIDRef type) {
    if (Is("DefaultAllocatorOnly") && allocator != kCFAllocatorDefault) return nullptr;
    if (Is("FirstSlotFilled")) ChangeFunctionBlock();
    return isPlugInType(type) ? newInstance() : nullptr;
}
