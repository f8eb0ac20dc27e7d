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
    run.Expect(seen == wanted, std::string(call) + " returns " + std::to_string(wanted),
               std::to_string(seen));
}

void countsFar(CheckRun& run) {
    constexpr ULONG many = 70000; // more than 16 bits can count
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    ULONG count = 1;
    for (ULONG i = 0; i < many; ++i) count = (*instance)->AddRef(instance);
    expectCount(run, many + 1, count, "the last AddRef");
    if (count != many + 1) return; // the loop below would release a freed instance
    for (ULONG i = 0; i < many; ++i) count = (*instance)->Release(instance);
    expectCount(run, 1, count, "the last Release but one");
}

bool hasBlock(const CheckRun& run) {
    const auto left = run.ObjectsLeft();
    return std::any_of(left.begin(), left.end(),
                       [](const std::string& line) { return line.rfind("memory block", 0) == 0; });
}

/// Releases the last reference while the main entry runs.
void releaseInsideCall(CheckRun& run) {
    FunctionBlock** const interface = run.Interface();
    bool isReleased = false;
    run.SetCallListener([&](const macplatform::RecordedCall& entry) {
        if (isReleased || entry.call != "CFPreferencesSetValue") return;
        isReleased = true;
        (*interface)->Release(interface);
    });
    const Outcome outcome = run.Deliver(Event(kPostInstall, 4900));
    run.Expect(isReleased, "the event sets a preference", "no preference is set");
    run.Expect(outcome.flagsAfter == 0, "the event sets no error bit",
               "error flags " + Hex(outcome.flagsAfter, 8));
    run.Expect(!outcome.changes.preferences.empty(), "the event's preferences are stored",
               Describe(outcome.changes));
}

} // namespace

void CountsOneByOne(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    expectCount(run, 2, addReference(run, instance), "AddRef");
    expectCount(run, 1, release(run, instance), "Release");
}

/// A check of its own, because this call also frees the instance.
void LastReleaseReturnsZero(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    expectCount(run, 0, release(run, instance), "the last Release");
}

void LastReleaseFrees(CheckRun& run) {
    run.Bundle();
    run.ForgetObjects();
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    addReference(run, instance);
    release(run, instance);
    run.Expect(hasBlock(run), "the instance is allocated while it has a reference", "freed");
    release(run, instance);
    run.Expect(!hasBlock(run), "the last Release frees the instance", "still allocated");
}

const CheckGroup kReferencesChecks = {
    "references",
    {
        Check("counting", &CountsOneByOne, {&SlotsAreFilled})
            .Claim("AddRef and Release return the new count, and a new instance has one reference.")
            .Reason("On a new instance AddRef returns 2, and then Release returns 1."),
        Check("zero", &LastReleaseReturnsZero, {&CountsOneByOne})
            .Claim("The last Release returns 0.")
            .Reason("The installer unloads the bundle when Release returns 0."),
        Check("many", &countsFar, {&CountsOneByOne})
            .Claim("The count is exact for 70,000 references.")
            .Reason("A count of 16 bits or less overflows."),
        Check("frees", &LastReleaseFrees, {&CountsOneByOne, &InstanceLiesInPointerBlock})
            .Claim("The last Release frees the instance, and no earlier Release does.")
            .Reason(
                "The instance is a Memory Manager block. The platform records which blocks are allocated."),
        Check("inside-call", &releaseInsideCall,
              {&PostInstallReturns, &LastReleaseReturnsZero, &LanguageIsStored})
            .Claim("The host may release the last reference while the main entry runs.")
            .Reason("An event must not use the instance. The parameter block holds everything that the event "
                    "needs."),
    }};

} // namespace xcodhost
