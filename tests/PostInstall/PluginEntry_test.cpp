#include "InstallerHost.h"

#include <Carbon/Carbon.h>
#include <macplatform/Journal.h>
#include <macplatform/LiveObjects.h>

namespace {

class PluginEntry : public InstallerHost {
protected:
    /// QueryInterface for the identifier of these bytes.
    static HRESULT Query(XCodInstance* instance, const CFUUIDBytes& iid, void** result) {
        return instance->functionBlock->QueryInterface(instance, iid, result);
    }
    static constexpr CFUUIDBytes hostInterface = {0x00, 0xD5, 0xFB, 0xFE, 0x3D, 0x3D, 0x40, 0xE2,
                                                  0x9D, 0xCB, 0x92, 0xED, 0x69, 0x58, 0x34, 0xF8};
    static constexpr CFUUIDBytes iUnknown = {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
};

TEST_F(PluginEntry, FactoryRefusesOtherTypesAndNoMemory) {
    const auto factory = reinterpret_cast<CFPlugInFactoryFunction>(Exported("MyFactory"));
    const CFUUIDRef other = CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, hostInterface);
    const CFUUIDRef type = CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, plugInType);
    EXPECT_EQ(factory(kCFAllocatorDefault, other), nullptr);
    EXPECT_EQ(factory(kCFAllocatorDefault, nullptr), nullptr);
    macplatform::OrderFault({"NewPtr", memFullErr});
    EXPECT_EQ(factory(kCFAllocatorDefault, type), nullptr);

    auto* const instance = static_cast<XCodInstance*>(factory(kCFAllocatorDefault, type));
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(instance->factoryID, nullptr);
    EXPECT_EQ(instance->functionBlock->Release(instance), 0U);
    CFRelease(other);
    CFRelease(type);
}

TEST_F(PluginEntry, CountsReferencesAndFreesAtZero) {
    const std::size_t before = macplatform::LiveObjectCount();
    XCodInstance* const instance = NewInstance();
    EXPECT_EQ(instance->functionBlock->_reserved, nullptr);
    EXPECT_EQ(macplatform::LiveObjectCount(), before + 1);
    EXPECT_EQ(instance->functionBlock->AddRef(instance), 2U);
    EXPECT_EQ(instance->functionBlock->Release(instance), 1U);
    EXPECT_EQ(instance->functionBlock->Release(instance), 0U);
    EXPECT_EQ(macplatform::LiveObjectCount(), before);
}

TEST_F(PluginEntry, BothInterfacesAreTheInstanceItself) {
    XCodInstance* const instance = NewInstance();
    for (const CFUUIDBytes& iid : {hostInterface, iUnknown}) {
        void* interface = nullptr;
        const SInt32 count = instance->refCount;
        EXPECT_EQ(Query(instance, iid, &interface), S_OK);
        EXPECT_EQ(interface, instance);
        EXPECT_EQ(instance->refCount, count + 1);
        instance->functionBlock->Release(instance);
    }
    instance->functionBlock->Release(instance);
}

TEST_F(PluginEntry, OtherInterfacesAreRefused) {
    XCodInstance* const instance = NewInstance();
    CFUUIDBytes almost = hostInterface;
    almost.byte15 ^= 1;
    for (const CFUUIDBytes& iid : {plugInType, almost}) {
        void* interface = instance;
        EXPECT_EQ(static_cast<UInt32>(Query(instance, iid, &interface)), 0x80000004U);
        EXPECT_EQ(interface, nullptr);
    }
    macplatform::OrderFault({"CFUUIDCreateFromUUIDBytes"});
    void* interface = instance;
    EXPECT_EQ(Query(instance, hostInterface, &interface), E_NOINTERFACE);
    EXPECT_EQ(interface, nullptr);
    EXPECT_EQ(instance->refCount, 1);
    instance->functionBlock->Release(instance);
}

TEST_F(PluginEntry, QueryInterfaceAddsItsReferenceThroughTheInstancesOwnBlock) {
    static int added;
    added = 0;
    XCodInstance* const instance = NewInstance();
    XCodFunctionBlock replaced = *instance->functionBlock;
    replaced.AddRef = [](void*) -> ULONG { return static_cast<ULONG>(++added); };
    const XCodFunctionBlock* const original = instance->functionBlock;
    instance->functionBlock = &replaced;
    void* interface = nullptr;
    EXPECT_EQ(Query(instance, iUnknown, &interface), S_OK);
    EXPECT_EQ(added, 1);
    instance->functionBlock = original;
    EXPECT_EQ(instance->functionBlock->Release(instance), 0U);
}

TEST_F(PluginEntry, LastReleaseLeavesTheBookkeepingOfAKnownFactory) {
    XCodInstance* const instance = NewInstance();
    instance->factoryID = Factory();
    CFRetain(instance->factoryID);
    CFPlugInAddInstanceForFactory(instance->factoryID);
    EXPECT_EQ(instance->functionBlock->AddRef(instance), 2U);
    EXPECT_EQ(instance->functionBlock->Release(instance), 1U);
    calls.clear();
    EXPECT_EQ(instance->functionBlock->Release(instance), 0U);
    EXPECT_EQ(calls, (Texts{"DisposePtr", "CFPlugInRemoveInstanceForFactory", "CFRelease"}));
}

TEST_F(PluginEntry, WrongSelectorSetsTheErrorBitSilently) {
    for (const int selector : {0, 999, 1001, -1000}) {
        for (const int message : {2, 3, 4}) {
            EXPECT_EQ(Deliver({message, 4900, 0, selector, 0xA0}), 0xA1U) << selector << ", " << message;
        }
    }
    EXPECT_EQ(effects, Texts{});
}

TEST_F(PluginEntry, OtherMessagesDoNothing) {
    for (const int message : {0, 1, 4, -2, 0x7FFF, -0x8000}) EXPECT_EQ(Deliver({message}), 0U) << message;
    EXPECT_EQ(effects, Texts{});
}

TEST_F(PluginEntry, ErrorBitsOfTheHostStay) {
    for (const int message : {2, 3}) EXPECT_EQ(Deliver({message, 4900, 0, 1000, ~0U}), ~0U);
}

} // namespace
