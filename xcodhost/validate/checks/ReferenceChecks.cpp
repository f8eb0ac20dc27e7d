#include "Groups.h"

#include "DisplayText.h"
#include "validate/CheckRun.h"

#include <macplatform/LiveObjects.h>

#include <algorithm>

namespace xcodhost {

namespace {

ULONG addReference(Trial& trial, FunctionBlock** instance) {
    return trial.Bundle().Inside({"AddRef", {}, {}}, [&] { return (*instance)->AddRef(instance); });
}

ULONG release(Trial& trial, FunctionBlock** instance) {
    return trial.Bundle().Inside({"Release", {}, {}}, [&] { return (*instance)->Release(instance); });
}

void expectCount(Trial& trial, ULONG wanted, ULONG seen, const char* call) {
    trial.Expect(seen == wanted, std::string(call) + " answers " + std::to_string(wanted),
                 std::to_string(seen));
}

void countsOneByOne(Trial& trial) {
    FunctionBlock** const instance = trial.Bundle().MakeInstance();
    expectCount(trial, 2, addReference(trial, instance), "AddRef");
    expectCount(trial, 1, release(trial, instance), "Release");
}

/// The last answer is looked at apart from the others: the instance is freed behind it.
void lastReleaseAnswersZero(Trial& trial) {
    FunctionBlock** const instance = trial.Bundle().MakeInstance();
    expectCount(trial, 0, release(trial, instance), "the last Release");
}

void countsFar(Trial& trial) {
    constexpr ULONG many = 70000; // more than 16 bits hold
    FunctionBlock** const instance = trial.Bundle().MakeInstance();
    ULONG count = 1;
    for (ULONG i = 0; i < many; ++i) count = (*instance)->AddRef(instance);
    expectCount(trial, many + 1, count, "the last AddRef");
    if (count != many + 1) return; // releasing would free it too early
    for (ULONG i = 0; i < many; ++i) count = (*instance)->Release(instance);
    expectCount(trial, 1, count, "the last Release but one");
}

bool hasBlock(const Trial& trial) {
    const auto left = trial.ObjectsLeft();
    return std::any_of(left.begin(), left.end(),
                       [](const std::string& line) { return line.rfind("memory block", 0) == 0; });
}

void lastReleaseFrees(Trial& trial) {
    trial.Bundle();
    trial.ForgetObjects();
    FunctionBlock** const instance = trial.Bundle().MakeInstance();
    addReference(trial, instance);
    release(trial, instance);
    trial.Expect(hasBlock(trial), "the record lives while a reference is held", "it was freed");
    release(trial, instance);
    trial.Expect(!hasBlock(trial), "the last Release frees the record", "it is still allocated");
}

/// The installer lets go of its last reference while the main entry is still at work.
void releaseInsideCall(Trial& trial) {
    FunctionBlock** const interface = trial.Interface();
    bool isReleased = false;
    trial.AtEachCall([&](const macplatform::JournalEntry& entry) {
        if (isReleased || entry.call != "CFPreferencesSetValue") return;
        isReleased = true;
        (*interface)->Release(interface);
    });
    const Outcome outcome = trial.Deliver(Event(kPostInstall, 4900));
    trial.Expect(isReleased, "a preference is set during the event", "none was");
    trial.Expect(outcome.flagsAfter == 0, "the event ends as always",
                 "error flags " + Hex(outcome.flagsAfter, 8));
    trial.Expect(!outcome.changes.preferences.empty(), "the event's preferences are stored",
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
         &lastReleaseAnswersZero},
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
