#include "Groups.h"

#include "DisplayText.h"
#include "validate/CheckRun.h"

#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>

#include <cstring>

namespace xcodhost {

namespace {

void rightTypeGivesInstance(CheckRun& run) { run.Bundle().MakeInstance(); }

/// Asks for an instance of the type; whatever comes back is released again.
void expectNoInstance(CheckRun& run, FactoryFunction make, const CFUUIDBytes& type) {
    const Owned<CFUUIDRef> identifier(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, type));
    const std::size_t before = macplatform::LiveObjectCount();
    void* const instance = run.Bundle().RunCode({kFactoryFunction, "type " + Describe(type), {}},
                                                [&] { return make(kCFAllocatorDefault, identifier.get()); });
    run.Expect(!instance, "null for " + Describe(type), "an instance");
    const std::size_t after = macplatform::LiveObjectCount();
    run.Expect(instance || after == before, "nothing allocated for " + Describe(type),
               Counted(after - before, "object") + " more");
}

void wrongTypesAreRefused(CheckRun& run) {
    const FactoryFunction make = run.Factory();
    for (const CFUUIDBytes& type : {CFUUIDBytes{}, kHostInterface, kUnknownInterface}) {
        expectNoInstance(run, make, type);
    }
    for (std::size_t byte = 0; byte < sizeof kPluginType; ++byte) {
        CFUUIDBytes near = kPluginType;
        reinterpret_cast<unsigned char*>(&near)[byte] ^= 1;
        expectNoInstance(run, make, near);
    }
}

void allocatorIsIgnored(CheckRun& run) {
    const FactoryFunction make = run.Factory();
    void* const instance = run.Bundle().RunCode({kFactoryFunction, "the system's allocator", {}}, [&] {
        return make(kCFAllocatorSystemDefault, ConstantIdentifier(kPluginType));
    });
    run.Expect(instance, "an instance with any allocator", "null with kCFAllocatorSystemDefault");
}

void instanceLiesInPointerBlock(CheckRun& run) {
    bool hasAsked = false;
    run.AtEachCall([&](const macplatform::RecordedCall& entry) { hasAsked |= entry.call == "NewPtr"; });
    run.Bundle().MakeInstance();
    run.AtEachCall({});
    run.Expect(hasAsked, "the instance is allocated by NewPtr", "NewPtr was not called");
}

void noMemoryGivesNothing(CheckRun& run) {
    const FactoryFunction make = run.Factory();
    run.ForgetObjects();
    macplatform::InjectFault({"NewPtr", 0, 0});
    void* const instance = run.Bundle().RunCode({kFactoryFunction, "NewPtr answers null", {}}, [&] {
        return make(kCFAllocatorDefault, ConstantIdentifier(kPluginType));
    });
    if (macplatform::CancelInjectedFaults() > 0)
        return; // it asks for memory elsewhere, which is another check's matter
    run.Expect(!instance, "null when there is no memory", "an instance");
    run.Expect(run.ObjectsLeft().empty(), "nothing is left allocated",
               Counted(run.ObjectsLeft().size(), "object"));
}

void instancesAreTheirOwn(CheckRun& run) {
    FunctionBlock** const first = run.Bundle().MakeInstance();
    FunctionBlock** const second = run.Bundle().MakeInstance();
    run.Expect(first != second, "each call makes a new instance", "the same instance twice");
    if (first == second) return;
    run.Bundle().RunCode({"AddRef", "first instance", {}}, [&] { return (*first)->AddRef(first); });
    const ULONG count =
        run.Bundle().RunCode({"AddRef", "second instance", {}}, [&] { return (*second)->AddRef(second); });
    run.Expect(count == 2, "the second instance counts for itself: 2", std::to_string(count));
}

void slotsAreFilled(CheckRun& run) {
    const FunctionBlock& block = **run.Bundle().MakeInstance();
    run.Expect(!block._reserved, "the first slot is null", "it is not null");
    run.Expect(block.AddRef, "the AddRef slot is filled", "it is null");
    run.Expect(block.main, "the main entry's slot is filled", "it is null");
}

void blockIsConstant(CheckRun& run) {
    FunctionBlock* const block = *run.Bundle().MakeInstance();
    FunctionBlock before = *block;
    run.Deliver(Event(kPreInstall, 4900));
    run.Deliver(Event(kPostInstall, 4900));
    run.Expect(*run.Interface() == block, "all instances share one function block", "another block");
    run.ReleaseInterface();
    run.Expect(std::memcmp(&before, block, sizeof before) == 0, "the function block is never modified",
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
