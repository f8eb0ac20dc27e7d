#include "Groups.h"

#include "DisplayText.h"
#include "validate/CheckRun.h"

#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>

#include <cstring>

namespace xcodhost {

namespace {

/// Expects that the factory returns null for the type and allocates nothing.
void expectNoInstance(CheckRun& run, FactoryFunction make, const CFUUIDBytes& type) {
    const macplatform::CFOwner<CFUUIDRef> identifier(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, type));
    const std::size_t before = macplatform::LiveObjectCount();
    void* const instance = run.Bundle().RunCode({kFactoryFunction, "type " + Describe(type), {}},
                                                [&] { return make(kCFAllocatorDefault, identifier.get()); });
    run.Expect(!instance, "null for " + Describe(type), "an instance");
    const std::size_t after = macplatform::LiveObjectCount();
    run.Expect(instance || after == before, "nothing allocated for " + Describe(type),
               Counted(after - before, "object") + " allocated");
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
    run.Expect(instance, "an instance for any allocator", "null with kCFAllocatorSystemDefault");
}

void noMemoryGivesNothing(CheckRun& run) {
    const FactoryFunction make = run.Factory();
    run.ForgetObjects();
    run.InjectFault({"NewPtr", 0, 0});
    void* const instance = run.Bundle().RunCode({kFactoryFunction, "NewPtr returns null", {}}, [&] {
        return make(kCFAllocatorDefault, ConstantIdentifier(kPluginType));
    });
    if (macplatform::CancelInjectedFaults() > 0)
        return; // the factory does not call NewPtr; another check reports that
    run.Expect(!instance, "null if there is no memory", "an instance");
    run.Expect(run.ObjectsLeft().empty(), "no memory is left allocated",
               Counted(run.ObjectsLeft().size(), "object"));
}

void blockIsConstant(CheckRun& run) {
    FunctionBlock* const block = *run.Bundle().MakeInstance();
    FunctionBlock before = *block;
    run.Deliver(Event(kPreInstall, 4900));
    run.Deliver(Event(kPostInstall, 4900));
    run.Expect(*run.Interface() == block, "the same function block in all instances", "another block");
    run.ReleaseInterface();
    run.Expect(std::memcmp(&before, block, sizeof before) == 0,
               "an unchanged function block after both events", "a changed function block");
}

} // namespace

void RightTypeGivesInstance(CheckRun& run) { run.Bundle().MakeInstance(); }

void InstanceLiesInPointerBlock(CheckRun& run) {
    bool hasAsked = false;
    run.SetCallListener([&](const macplatform::RecordedCall& entry) { hasAsked |= entry.call == "NewPtr"; });
    run.Bundle().MakeInstance();
    run.SetCallListener({});
    run.Expect(hasAsked, "the instance is allocated by NewPtr", "NewPtr was not called");
}

void InstancesAreTheirOwn(CheckRun& run) {
    FunctionBlock** const first = run.Bundle().MakeInstance();
    FunctionBlock** const second = run.Bundle().MakeInstance();
    run.Expect(first != second, "a new instance from each call", "the same instance twice");
    if (first == second) return;
    run.Bundle().RunCode({"AddRef", "first instance", {}}, [&] { return (*first)->AddRef(first); });
    const ULONG count =
        run.Bundle().RunCode({"AddRef", "second instance", {}}, [&] { return (*second)->AddRef(second); });
    run.Expect(count == 2, "2 references of the second instance", std::to_string(count));
}

void SlotsAreFilled(CheckRun& run) {
    const FunctionBlock& block = **run.Bundle().MakeInstance();
    run.Expect(!block._reserved, "null in the first slot", "a pointer");
    run.Expect(block.AddRef, "a function in the AddRef slot", "null");
    run.Expect(block.main, "a function in the slot of the main entry", "null");
}

const std::vector<Check::Body> kNeedsCode = {&CodeLoads, &FactoryHasItsName};

const CheckGroup kFactoryChecks = {
    "factory",
    {
        Check("right-type", &RightTypeGivesInstance, {&CodeLoads})
            .Claim("The factory creates an instance for the installer's plug-in type.")
            .Reason("The first word of the instance points to the function block. QueryInterface and Release "
                    "in the function block are not null."),
        Check("wrong-types", &wrongTypesAreRefused, kNeedsCode)
            .Claim("The factory returns null and allocates nothing for any other type.")
            .Reason("The factory must compare all 16 bytes of the type. The check also asks for types that "
                    "differ in one bit."),
        Check("allocator", &allocatorIsIgnored, {&RightTypeGivesInstance, &FactoryHasItsName})
            .Claim("The factory ignores its allocator argument.")
            .Reason("The installer's allocator is not meant for instances."),
        Check("pointer-block", &InstanceLiesInPointerBlock, {&RightTypeGivesInstance})
            .Claim("The instance is a memory block of the Memory Manager.")
            .Reason("NewPtr allocates the block and DisposePtr frees it."),
        Check("no-memory", &noMemoryGivesNothing,
              {&RightTypeGivesInstance, &InstanceLiesInPointerBlock, &FactoryHasItsName})
            .Claim("The factory returns null if there is no memory.")
            .Reason("The check makes NewPtr return null. A write through this null pointer crashes the "
                    "installer."),
        Check("two-instances", &InstancesAreTheirOwn, {&CountsOneByOne})
            .Claim("Two instances have separate reference counts.")
            .Reason("A static instance or a static count breaks this rule."),
    }};

const CheckGroup kFunctionBlockChecks = {
    "function-block",
    {
        Check("slots", &SlotsAreFilled, {&RightTypeGivesInstance})
            .Claim("The function block holds null, QueryInterface, AddRef, Release and the main entry, in "
                   "this order.")
            .Reason("The installer calls the functions at these positions."),
        Check("constant", &blockIsConstant, {&HostInterfaceIsGiven, &PreInstallReturns, &PostInstallReturns})
            .Claim("All instances share one function block, and the block never changes.")
            .Reason("The function block is a static table."),
    }};

} // namespace xcodhost
