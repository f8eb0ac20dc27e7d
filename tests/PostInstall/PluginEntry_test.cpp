// What a host cannot see of the instance. The plug-in contract itself is tried by the validation of the
// bundle, whose checks each have a broken plug-in that shows them to work.

#include "InstallerHost.h"

#include <Carbon/Carbon.h>

namespace {

using PluginEntry = InstallerHost;

TEST_F(PluginEntry, FactoryRefusesNoType) {
    const auto factory = reinterpret_cast<CFPlugInFactoryFunction>(Exported("MyFactory"));
    EXPECT_EQ(factory(kCFAllocatorDefault, nullptr), nullptr);
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

} // namespace
