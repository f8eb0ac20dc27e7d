#include "Groups.h"

#include "DisplayText.h"
#include "validate/CheckRun.h"

#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>

#include <cstring>

namespace xcodhost {

namespace {

void rightTypeGivesInstance(Trial& trial) { trial.Bundle().MakeInstance(); }

/// Asks for an instance of the type; whatever comes back is released again.
void expectNoInstance(Trial& trial, FactoryFunction make, const CFUUIDBytes& type) {
    const Owned<CFUUIDRef> identifier(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, type));
    const std::size_t before = macplatform::LiveObjectCount();
    void* const instance = trial.Bundle().Inside({kFactoryFunction, "type " + Describe(type), {}},
                                                 [&] { return make(kCFAllocatorDefault, identifier.get()); });
    trial.Expect(!instance, "null for " + Describe(type), "an instance");
    const std::size_t after = macplatform::LiveObjectCount();
    trial.Expect(instance || after == before, "nothing allocated for " + Describe(type),
                 Counted(after - before, "object") + " more");
}

void wrongTypesAreRefused(Trial& trial) {
    const FactoryFunction make = trial.Factory();
    for (const CFUUIDBytes& type : {CFUUIDBytes{}, kHostInterface, kUnknownInterface}) {
        expectNoInstance(trial, make, type);
    }
    for (std::size_t byte = 0; byte < sizeof kPluginType; ++byte) {
        CFUUIDBytes near = kPluginType;
        reinterpret_cast<unsigned char*>(&near)[byte] ^= 1;
        expectNoInstance(trial, make, near);
    }
}

void allocatorIsIgnored(Trial& trial) {
    const FactoryFunction make = trial.Factory();
    void* const instance = trial.Bundle().Inside({kFactoryFunction, "the system's allocator", {}}, [&] {
        return make(kCFAllocatorSystemDefault, ConstantIdentifier(kPluginType));
    });
    trial.Expect(instance, "an instance with any allocator", "null with kCFAllocatorSystemDefault");
}

void instanceLiesInPointerBlock(Trial& trial) {
    bool hasAsked = false;
    trial.AtEachCall([&](const macplatform::JournalEntry& entry) { hasAsked |= entry.call == "NewPtr"; });
    trial.Bundle().MakeInstance();
    trial.AtEachCall({});
    trial.Expect(hasAsked, "the instance is allocated by NewPtr", "NewPtr was not called");
}

void noMemoryGivesNothing(Trial& trial) {
    const FactoryFunction make = trial.Factory();
    trial.ForgetObjects();
    macplatform::OrderFault({"NewPtr", 0, 0});
    void* const instance = trial.Bundle().Inside({kFactoryFunction, "NewPtr answers null", {}}, [&] {
        return make(kCFAllocatorDefault, ConstantIdentifier(kPluginType));
    });
    if (macplatform::CancelFaults() > 0)
        return; // it asks for memory elsewhere, which is another check's matter
    trial.Expect(!instance, "null when there is no memory", "an instance");
    trial.Expect(trial.ObjectsLeft().empty(), "nothing is left allocated",
                 Counted(trial.ObjectsLeft().size(), "object"));
}

void instancesAreTheirOwn(Trial& trial) {
    FunctionBlock** const first = trial.Bundle().MakeInstance();
    FunctionBlock** const second = trial.Bundle().MakeInstance();
    trial.Expect(first != second, "each call makes a new instance", "the same instance twice");
    if (first == second) return;
    trial.Bundle().Inside({"AddRef", "first instance", {}}, [&] { return (*first)->AddRef(first); });
    const ULONG count =
        trial.Bundle().Inside({"AddRef", "second instance", {}}, [&] { return (*second)->AddRef(second); });
    trial.Expect(count == 2, "the second instance counts for itself: 2", std::to_string(count));
}

void slotsAreFilled(Trial& trial) {
    const FunctionBlock& block = **trial.Bundle().MakeInstance();
    trial.Expect(!block._reserved, "the first slot is null", "it is not null");
    trial.Expect(block.AddRef, "the AddRef slot is filled", "it is null");
    trial.Expect(block.main, "the main entry's slot is filled", "it is null");
}

void blockIsConstant(Trial& trial) {
    FunctionBlock* const block = *trial.Bundle().MakeInstance();
    FunctionBlock before = *block;
    trial.Deliver(Event(kPreInstall, 4900));
    trial.Deliver(Event(kPostInstall, 4900));
    trial.Expect(*trial.Interface() == block, "all instances share one function block", "another block");
    trial.ReleaseInterface();
    trial.Expect(std::memcmp(&before, block, sizeof before) == 0, "the function block is never modified",
                 "it has changed after both events");
}

} // namespace

std::vector<Check> FactoryChecks() {
    const std::vector<const char*> loaded = {"bundle.loads", "bundle.factory-name"};
    return {
        {"factory.right-type",
         "The factory gives an instance for the installer's plug-in type.",
         "The instance's first word points to the function block, whose QueryInterface and Release are "
         "filled.",
         {"bundle.loads"},
         &rightTypeGivesInstance},
        {"factory.wrong-types", "For any other type the factory answers null and allocates nothing.",
         "The type is compared as a whole: types that differ in one bit are asked for as well.", loaded,
         &wrongTypesAreRefused},
        {"factory.allocator",
         "The factory ignores the allocator that it is given.",
         "The installer's allocator is not meant for instances.",
         {"factory.right-type", "bundle.factory-name"},
         &allocatorIsIgnored},
        {"factory.pointer-block",
         "The instance lies in a block of the Memory Manager.",
         "It is allocated by NewPtr and freed by DisposePtr.",
         {"factory.right-type"},
         &instanceLiesInPointerBlock},
        {"factory.no-memory",
         "Without memory the factory answers null.",
         "NewPtr is made to answer null; writing through it would take the installer down.",
         {"factory.right-type", "factory.pointer-block", "bundle.factory-name"},
         &noMemoryGivesNothing},
        {"factory.two-instances",
         "Two instances at once count their references apart.",
         "An instance that is a static object, or a count that is, breaks this.",
         {"references.counting"},
         &instancesAreTheirOwn},
        {"function-block.slots",
         "The function block holds null, QueryInterface, AddRef, Release and the main entry.",
         "The installer calls through these places.",
         {"factory.right-type"},
         &slotsAreFilled},
        {"function-block.constant",
         "All instances share one function block, which never changes.",
         "It is a static table.",
         {"interface.host", "dispatch.pre-install", "dispatch.post-install"},
         &blockIsConstant},
    };
}

} // namespace xcodhost
