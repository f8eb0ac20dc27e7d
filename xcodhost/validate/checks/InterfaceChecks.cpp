#include "Groups.h"

#include "DisplayText.h"
#include "validate/CheckRun.h"

#include <cstring>

namespace xcodhost {

namespace {

struct Query {
    std::uint32_t result = 0;
    void* found = nullptr;
};

Query ask(CheckRun& run, FunctionBlock** instance, const CFUUIDBytes& identifier) {
    Query query;
    query.found = &query; // neither null nor an instance: shows whether the call sets the pointer
    query.result = run.Bundle().RunCode({"QueryInterface", "interface " + Describe(identifier), {}}, [&] {
        return static_cast<std::uint32_t>((*instance)->QueryInterface(instance, identifier, &query.found));
    });
    return query;
}

ULONG countOf(CheckRun& run, FunctionBlock** instance) {
    run.Bundle().RunCode({"AddRef", {}, {}}, [&] { return (*instance)->AddRef(instance); });
    return run.Bundle().RunCode({"Release", {}, {}}, [&] { return (*instance)->Release(instance); });
}

void expectInstance(CheckRun& run, const CFUUIDBytes& identifier) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    const Query query = ask(run, instance, identifier);
    run.Expect(query.result == 0, "result 0x00000000", Hex(query.result, 8));
    run.Expect(query.result != 0 || query.found == instance, "the instance itself in the output pointer",
               query.found ? "another pointer" : "null");
}

void unknownInterfaceIsGiven(CheckRun& run) { expectInstance(run, kUnknownInterface); }

/// Returns identifiers of interfaces that no plug-in of this installer supports.
std::vector<CFUUIDBytes> otherInterfaces() {
    std::vector<CFUUIDBytes> others = {CFUUIDBytes{}, kPluginType};
    for (const CFUUIDBytes& known : {kHostInterface, kUnknownInterface}) {
        for (std::size_t byte = 0; byte < sizeof known; ++byte) {
            CFUUIDBytes near = known;
            reinterpret_cast<unsigned char*>(&near)[byte] ^= 0x10;
            others.push_back(near);
        }
    }
    return others;
}

void othersAreRefused(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    for (const CFUUIDBytes& identifier : otherInterfaces()) {
        const Query query = ask(run, instance, identifier);
        run.Expect(query.result == 0x80000004, "result 0x80000004 for " + Describe(identifier),
                   Hex(query.result, 8));
    }
}

void refusalClearsThePlace(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    for (const CFUUIDBytes& identifier : otherInterfaces()) {
        const Query query = ask(run, instance, identifier);
        run.Expect(!query.found, "null in the output pointer for " + Describe(identifier), "not null");
    }
}

void refusalAddsNoReference(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    for (const CFUUIDBytes& identifier : otherInterfaces()) ask(run, instance, identifier);
    const ULONG count = countOf(run, instance);
    run.Expect(count == 1, "1 reference after unsupported interfaces", std::to_string(count));
}

int gSlotCalls = 0;
ULONG countSlotCall(void*) { return static_cast<ULONG>(++gSlotCalls); }

void referenceGoesThroughSlot(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    FunctionBlock* const own = *instance;
    FunctionBlock replaced = *own;
    replaced.AddRef = &countSlotCall;
    gSlotCalls = 0;
    *instance = &replaced;
    ask(run, instance, kHostInterface);
    *instance = own;
    run.Expect(gSlotCalls == 1, "1 call of AddRef through the instance's function block",
               Counted(static_cast<std::size_t>(gSlotCalls), "call") + " of the replaced AddRef");
}

} // namespace

void HostInterfaceIsGiven(CheckRun& run) { expectInstance(run, kHostInterface); }

void InterfaceAddsReference(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    ask(run, instance, kHostInterface);
    const ULONG afterHost = countOf(run, instance);
    run.Expect(afterHost == 2, "2 references after the host's interface", std::to_string(afterHost));
    ask(run, instance, kUnknownInterface);
    const ULONG afterUnknown = countOf(run, instance);
    run.Expect(afterUnknown == afterHost + 1, "1 more reference after IUnknown",
               std::to_string(afterUnknown) + " after " + std::to_string(afterHost));
}

void QueriesLeaveNothing(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    run.ForgetObjects();
    for (const CFUUIDBytes& identifier : {kHostInterface, kUnknownInterface, kPluginType}) {
        ask(run, instance, identifier);
        const auto left = run.ObjectsLeft();
        run.Expect(left.empty(), "no object is left after QueryInterface", left.empty() ? "" : left.front());
    }
}

const std::vector<Check::Body> kNeedsCounting = {&HostInterfaceIsGiven, &CountsOneByOne};

const CheckGroup kInterfaceChecks = {
    "interface",
    {
        Check("host", &HostInterfaceIsGiven, {&RightTypeGivesInstance})
            .Claim("QueryInterface supports the installer's interface.")
            .Reason("The result is 0, and the output pointer is the instance itself."),
        Check("iunknown", &unknownInterfaceIsGiven, {&RightTypeGivesInstance})
            .Claim("QueryInterface supports IUnknown and returns the same pointer.")
            .Reason("The IUnknown pointer is the identity of an object."),
        Check("others", &othersAreRefused, {&RightTypeGivesInstance})
            .Claim("QueryInterface returns 0x80000004 for any other interface.")
            .Reason("QueryInterface must compare all 16 bytes of the identifier. The check also asks for "
                    "identifiers that differ in one bit."),
        Check("clears-place", &refusalClearsThePlace, {&RightTypeGivesInstance, &othersAreRefused})
            .Claim("QueryInterface sets the output pointer to null for an unsupported interface.")
            .Reason("The installer tests the pointer and ignores the result."),
        Check("adds-reference", &InterfaceAddsReference,
              {&HostInterfaceIsGiven, &unknownInterfaceIsGiven, &CountsOneByOne})
            .Claim("Each successful QueryInterface call adds one reference.")
            .Reason("Without this reference the installer's Release frees an instance that is still in use."),
        Check("refusal-count", &refusalAddsNoReference, {&othersAreRefused, &CountsOneByOne})
            .Claim("A QueryInterface call for an unsupported interface adds no reference.")
            .Reason("An additional reference keeps the instance from being freed."),
        Check("through-slot", &referenceGoesThroughSlot, {&InterfaceAddsReference})
            .Claim("QueryInterface adds the reference through the instance's function block.")
            .Reason("A host may replace the function block to observe the reference count."),
        Check("nothing-left", &QueriesLeaveNothing, kNeedsCounting)
            .Claim("QueryInterface leaves no platform object behind.")
            .Reason("QueryInterface must release the identifier object that it creates for the comparison, "
                    "for supported and unsupported interfaces."),
    }};

} // namespace xcodhost
