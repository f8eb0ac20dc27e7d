#include <PostInstall/PluginEntry.h>

#include <Carbon/Carbon.h>
#include <new>

namespace {

CFUUIDRef plugInType() {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2,
                                          0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8);
}

CFUUIDRef hostInterface() {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x00, 0xD5, 0xFB, 0xFE, 0x3D, 0x3D, 0x40, 0xE2,
                                          0x9D, 0xCB, 0x92, 0xED, 0x69, 0x58, 0x34, 0xF8);
}

/// Adds `change` to the reference count and returns the new count. The addition is unsigned, because signed
/// overflow is undefined.
ULONG changeRefCount(XCodInstance& instance, UInt32 change) {
    const UInt32 count = static_cast<UInt32>(instance.refCount) + change;
    instance.refCount = static_cast<SInt32>(count);
    return count;
}

HRESULT myQueryInterface(void* self, REFIID iid, LPVOID* result) {
    const CFUUIDRef asked = CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, iid);
    // The instance has one interface. Both identifiers refer to this interface.
    const bool known = asked && (CFEqual(asked, hostInterface()) || CFEqual(asked, IUnknownUUID));
    if (known) static_cast<XCodInstance*>(self)->functionBlock->AddRef(self);
    *result = known ? self : nullptr;
    if (asked) CFRelease(asked);
    return known ? S_OK : E_NOINTERFACE;
}

ULONG myAddRef(void* self) { return changeRefCount(*static_cast<XCodInstance*>(self), 1); }

ULONG myRelease(void* self) {
    auto* const instance = static_cast<XCodInstance*>(self);
    const ULONG left = changeRefCount(*instance, static_cast<UInt32>(-1));
    if (left != 0) return left;

    const CFUUIDRef factoryID = instance->factoryID;
    DisposePtr(reinterpret_cast<Ptr>(instance));
    if (factoryID) {
        CFPlugInRemoveInstanceForFactory(factoryID);
        CFRelease(factoryID);
    }
    return 0;
}

} // namespace

constexpr XCodFunctionBlock gXcodFunctionBlock = {nullptr, myQueryInterface, myAddRef, myRelease, XCodMain};

void* MyFactory(CFAllocatorRef, CFUUIDRef type) {
    if (!type || !CFEqual(type, plugInType())) return nullptr;
    const Ptr block = NewPtr(sizeof(XCodInstance));
    return block ? new (block) XCodInstance{&gXcodFunctionBlock, nullptr, 1} : nullptr;
}

void XCodMain(XCodParamBlock* block) {
    if (block->selector != kXCodSelector) {
        block->errorFlags = block->errorFlags | kXCodCallFailed;
        return;
    }
    if (block->message == kXCodPreInstallation) PreInstall(block);
    if (block->message == kXCodPostInstallation) PostInstall(block);
}
