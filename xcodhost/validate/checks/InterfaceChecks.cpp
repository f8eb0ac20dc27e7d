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
    query.found = &query; // neither null nor an instance
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
    run.Expect(query.result != 0 || query.found == instance, "the instance itself in the result place",
               query.found ? "another pointer" : "null");
}

void hostInterfaceIsGiven(CheckRun& run) { expectInstance(run, kHostInterface); }
void unknownInterfaceIsGiven(CheckRun& run) { expectInstance(run, kUnknownInterface); }

/// Identifiers that no plug-in of this installer has.
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
        run.Expect(!query.found, "null in the result place for " + Describe(identifier), "it is not null");
    }
}

void interfaceAddsReference(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    ask(run, instance, kHostInterface);
    const ULONG afterHost = countOf(run, instance);
    run.Expect(afterHost == 2, "2 references after the host's interface", std::to_string(afterHost));
    ask(run, instance, kUnknownInterface);
    const ULONG afterUnknown = countOf(run, instance);
    run.Expect(afterUnknown == afterHost + 1, "1 reference more after IUnknown",
               std::to_string(afterUnknown) + " after " + std::to_string(afterHost));
}

void refusalAddsNoReference(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    for (const CFUUIDBytes& identifier : otherInterfaces()) ask(run, instance, identifier);
    const ULONG count = countOf(run, instance);
    run.Expect(count == 1, "1 reference after refused interfaces", std::to_string(count));
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
    run.Expect(gSlotCalls == 1, "QueryInterface calls the AddRef slot of the instance's function block once",
               Counted(static_cast<std::size_t>(gSlotCalls), "call") + " of a slot that was replaced");
}

void queriesLeaveNothing(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    run.ForgetObjects();
    for (const CFUUIDBytes& identifier : {kHostInterface, kUnknownInterface, kPluginType}) {
        ask(run, instance, identifier);
        const auto left = run.ObjectsLeft();
        run.Expect(left.empty(), "no object left after the query", left.empty() ? "" : left.front());
    }
}

} // namespace

std::vector<Check> InterfaceChecks() {
    const std::vector<const char*> counted = {"interface.host", "references.counting"};
    return {
        {"interface.host",
         "QueryInterface gives the installer's interface.",
         "Result 0 and the instance itself in the result place.",
         {"factory.right-type"},
         &hostInterfaceIsGiven},
        {"interface.iunknown",
         "QueryInterface gives IUnknown, which is the same pointer.",
         "The identity of an object is its IUnknown pointer.",
         {"factory.right-type"},
         &unknownInterfaceIsGiven},
        {"interface.others",
         "QueryInterface answers 0x80000004 for any other interface.",
         "The identifier is compared as a whole; near ones are asked for as well.",
         {"factory.right-type"},
         &othersAreRefused},
        {"interface.clears-place",
         "A refused interface leaves null in the result place.",
         "The installer looks at the pointer, not at the result.",
         {"factory.right-type", "interface.others"},
         &refusalClearsThePlace},
        {"interface.adds-reference",
         "Each interface that is given adds one reference.",
         "Otherwise the installer's Release frees an instance that is still in use.",
         {"interface.host", "interface.iunknown", "references.counting"},
         &interfaceAddsReference},
        {"interface.refusal-count",
         "A refused interface adds no reference.",
         "Otherwise the instance is never freed.",
         {"interface.others", "references.counting"},
         &refusalAddsNoReference},
        {"interface.through-slot",
         "The reference is added through the instance's own function block.",
         "A host may put a function block of its own in front, to watch the counting.",
         {"interface.adds-reference"},
         &referenceGoesThroughSlot},
        {"interface.nothing-left", "A query leaves no platform object behind.",
         "The identifier object that is made for the comparison is released, whatever the answer.", counted,
         &queriesLeaveNothing},
    };
}

} // namespace xcodhost
