#include "Groups.h"

#include "DisplayText.h"
#include "validate/CheckRun.h"

#include <macplatform/LiveObjects.h>

#include <algorithm>

namespace xcodhost {

namespace {

ULONG addReference(CheckRun& run, FunctionBlock** instance) {
    return run.Bundle().RunCode({"AddRef", {}, {}}, [&] { return (*instance)->AddRef(instance); });
}

ULONG release(CheckRun& run, FunctionBlock** instance) {
    return run.Bundle().RunCode({"Release", {}, {}}, [&] { return (*instance)->Release(instance); });
}

void expectCount(CheckRun& run, ULONG wanted, ULONG seen, const char* call) {
    run.Expect(seen == wanted, std::string(call) + " answers " + std::to_string(wanted),
               std::to_string(seen));
}

void countsOneByOne(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    expectCount(run, 2, addReference(run, instance), "AddRef");
    expectCount(run, 1, release(run, instance), "Release");
}

/// The last answer is looked at apart from the others: the instance is freed behind it.
void lastReleaseReturnsZero(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    expectCount(run, 0, release(run, instance), "the last Release");
}

void countsFar(CheckRun& run) {
    constexpr ULONG many = 70000; // more than 16 bits hold
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    ULONG count = 1;
    for (ULONG i = 0; i < many; ++i) count = (*instance)->AddRef(instance);
    expectCount(run, many + 1, count, "the last AddRef");
    if (count != many + 1) return; // releasing would free it too early
    for (ULONG i = 0; i < many; ++i) count = (*instance)->Release(instance);
    expectCount(run, 1, count, "the last Release but one");
}

bool hasBlock(const CheckRun& run) {
    const auto left = run.ObjectsLeft();
    return std::any_of(left.begin(), left.end(),
                       [](const std::string& line) { return line.rfind("memory block", 0) == 0; });
}

void lastReleaseFrees(CheckRun& run) {
    run.Bundle();
    run.ForgetObjects();
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    addReference(run, instance);
    release(run, instance);
    run.Expect(hasBlock(run), "the record lives while a reference is held", "it was freed");
    release(run, instance);
    run.Expect(!hasBlock(run), "the last Release frees the record", "it is still allocated");
}

/// The installer lets go of its last reference while the main entry is still at work.
void releaseInsideCall(CheckRun& run) {
    FunctionBlock** const interface = run.Interface();
    bool isReleased = false;
    run.AtEachCall([&](const macplatform::RecordedCall& entry) {
        if (isReleased || entry.call != "CFPreferencesSetValue") return;
        isReleased = true;
        (*interface)->Release(interface);
    });
    const Outcome outcome = run.Deliver(Event(kPostInstall, 4900));
    run.Expect(isReleased, "a preference is set during the event", "none was");
    run.Expect(outcome.flagsAfter == 0, "the event ends as always",
               "error flags " + Hex(outcome.flagsAfter, 8));
    run.Expect(!outcome.changes.preferences.empty(), "the event's preferences are stored",
               Describe(outcome.changes));
}

} // namespace

std::vector<Check> ReferenceChecks() {
    return {
        {"references.counting",
         "AddRef and Release answer the new count, and a fresh instance has one reference.",
         "AddRef on a fresh instance answers 2, Release then 1.",
         {"function-block.slots"},
         &countsOneByOne},
        {"references.zero",
         "The last Release answers 0.",
         "The installer unloads the bundle on that answer.",
         {"references.counting"},
         &lastReleaseReturnsZero},
        {"references.many",
         "The count is exact over 70,000 references.",
         "A count of 16 bits or less breaks this.",
         {"references.counting"},
         &countsFar},
        {"references.frees",
         "The last Release frees the instance's record, and no earlier one does.",
         "The record is a Memory Manager block; the platform knows which of them are alive.",
         {"references.counting", "factory.pointer-block"},
         &lastReleaseFrees},
        {"references.inside-call",
         "The last reference may be released while the main entry is at work.",
         "The event needs nothing of the instance: the parameter block is all that it is given.",
         {"dispatch.post-install", "references.zero", "post-install.language"},
         &releaseInsideCall},
    };
}

} // namespace xcodhost
