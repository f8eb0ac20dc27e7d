// Parts of the instance that no host observes. `xcodhost validate` verifies the plug-in contract itself.

#include "InstallerHost.h"

#include <Carbon/Carbon.h>

namespace {

using PluginEntry = InstallerHost;

TEST_F(PluginEntry, FactoryRejectsANullType) {
    const auto factory = reinterpret_cast<CFPlugInFactoryFunction>(Exported("MyFactory"));
    EXPECT_EQ(factory(kCFAllocatorDefault, nullptr), nullptr);
}

TEST_F(PluginEntry, LastReleaseUnregistersTheInstanceFromItsFactory) {
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

} // namespace
