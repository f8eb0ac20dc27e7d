#include "Groups.h"

#include "DisplayText.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace xcodhost {

namespace {

constexpr std::uint16_t kEvents[] = {kPreInstall, kPostInstall};

std::size_t callsOf(const std::string& name, const Outcome& outcome) {
    return static_cast<std::size_t>(std::count_if(outcome.calls.begin(), outcome.calls.end(),
                                                  [&](const auto& entry) { return entry.call == name; }));
}

/// Expects that every preferences file is readable, no preference is removed and no other file changes.
void expectNothingHalfWritten(CheckRun& run, const Outcome& outcome, const std::string& fault) {
    for (const auto& [domain, file] : run.CurrentVolume().preferences) {
        run.Expect(file.problem.empty(), fault + ": every preferences file is readable",
                   file.path + ' ' + file.problem);
    }
    for (const FileChange& change : outcome.changes.files) {
        run.Fail(fault + ": only preferences files change", Printable(change.path) + ": " + change.what);
    }
    for (const PreferenceChange& change : outcome.changes.preferences) {
        run.Expect(change.after.has_value(), fault + ": no preference is removed",
                   change.domain + ' ' + change.key);
    }
}

/// Delivers both events once for each call of these names that a delivery without a fault makes, and makes
/// that call fail with `code`.
void expectHarmless(CheckRun& run, const std::vector<std::string>& names, long code) {
    for (const std::uint16_t message : kEvents) {
        run.UseFreshVolume();
        const Outcome good = run.Deliver(Event(message, 4900));
        for (const std::string& name : names) {
            for (std::size_t skip = 0; skip < callsOf(name, good); ++skip) {
                run.UseFreshVolume();
                run.Write("/Library/Preferences/com.korvane.updater.plist",
                          "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>UpdateInterval</key>"
                          "<integer>7</integer></dict></plist>");
                run.ForgetObjects();
                run.InjectFault({name, code, static_cast<unsigned>(skip)});
                const Outcome outcome = run.Deliver(Event(message, 4900));
                macplatform::CancelInjectedFaults();
                const std::string fault = "call " + std::to_string(skip + 1) + " of " + name + " fails";
                expectNothingHalfWritten(run, outcome, fault);
                run.Expect(outcome.flagsAfter == 0, fault + ": no error bit", Hex(outcome.flagsAfter, 8));
                const auto left = run.ObjectsLeft();
                run.Expect(left.empty(), fault + ": no object is leaked", left.empty() ? "" : left.front());
            }
        }
    }
}

void failedPreferencesAreHarmless(CheckRun& run) {
    expectHarmless(run, {"CFPreferencesSetValue", "CFPreferencesSynchronize"}, 0);
}
void missingStringsAreHarmless(CheckRun& run) {
    expectHarmless(
        run, {"CFStringCreateWithCString", "CFStringCreateWithBytes", "CFStringCreateWithCharacters"}, 0);
}
void missingNumbersAreHarmless(CheckRun& run) { expectHarmless(run, {"CFNumberCreate"}, 0); }
void failedFinderCallsAreHarmless(CheckRun& run) {
    expectHarmless(run,
                   {"CFURLCreateWithFileSystemPath", "CFURLGetFSRef", "FSPathMakeRef", "FSGetCatalogInfo",
                    "FSSetCatalogInfo"},
                   -5000);
}
void failedFileCallsAreHarmless(CheckRun& run) {
    expectHarmless(run, {"access", "stat", "fopen", "open", "openat"}, EIO);
}

void finderFaultLeavesOther(CheckRun& run) {
    for (unsigned skip = 0; skip < 2; ++skip) {
        run.UseFreshVolume();
        run.Interface();
        run.InjectFault({"FSGetCatalogInfo", -5000, skip});
        const Outcome outcome = run.Deliver(Event(kPostInstall, 4900));
        if (macplatform::CancelInjectedFaults() > 0) continue; // the plug-in does not make this call
        run.Expect(outcome.changes.finderFlags.size() == 1, "the other item gets its flags",
                   Describe(outcome.changes));
    }
}

/// Uses a file that is no property list: a value cannot be added to it without a loss of its bytes.
void brokenFileIsLeft(CheckRun& run) {
    constexpr const char* path = "/Library/Preferences/com.korvane.updater.plist";
    const std::string bytes = "<?xml version=\"1.0\"?><plist><dict><key>half";
    run.Write(path, bytes);
    for (const std::uint16_t message : kEvents) run.Deliver(Event(message, 4900));
    std::ifstream in(run.OnVolume(path), std::ios::binary);
    const std::string now(std::istreambuf_iterator<char>(in), {});
    run.Expect(now == bytes, "the broken file keeps its bytes", now);
}

void queryWithoutMemoryIsHarmless(CheckRun& run) {
    FunctionBlock** const instance = run.Bundle().MakeInstance();
    run.ForgetObjects();
    run.InjectFault({"CFUUIDCreateFromUUIDBytes", 0, 0});
    void* found = nullptr;
    const auto result = run.Bundle().RunCode({"QueryInterface", "no memory for the identifier", {}}, [&] {
        return static_cast<std::uint32_t>((*instance)->QueryInterface(instance, kHostInterface, &found));
    });
    macplatform::CancelInjectedFaults();
    run.Expect((result == 0) == (found != nullptr), "result and output pointer agree",
               Hex(result, 8) + (found ? ", a pointer" : ", null"));
    run.Expect(run.ObjectsLeft().empty(), "no object is leaked", Counted(run.ObjectsLeft().size(), "object"));
}

} // namespace

const std::vector<Check::Body> kNeedsCleanEvents = {&PreInstallChangesNothingElse,
                                                    &PostInstallChangesNothingElse, &NoObjectIsLeft};

const CheckGroup kFaultsChecks = {
    "faults",
    {
        Check("preferences", &failedPreferencesAreHarmless, kNeedsCleanEvents)
            .Claim("A failed preference call causes no error bit, no half-written file and no leak.")
            .Reason("The check makes each call that sets or synchronises a preference fail in turn."),
        Check("no-string", &missingStringsAreHarmless, kNeedsCleanEvents)
            .Claim("A string that cannot be created causes no harm.")
            .Reason("The check makes each call that creates a CFString fail in turn."),
        Check("no-number", &missingNumbersAreHarmless, kNeedsCleanEvents)
            .Claim("A number that cannot be created causes no harm, and the stored value stays.")
            .Reason("Setting a preference to null removes the stored value."),
        Check("finder", &failedFinderCallsAreHarmless, kNeedsCleanEvents)
            .Claim("A failed Finder call causes no harm.")
            .Reason("The check makes each call that reads or writes the Finder information fail in turn."),
        Check("finder-apart", &finderFaultLeavesOther,
              {&FolderFlagsAreSet, &IconIsHidden, &OtherItemsKeepFlags})
            .Claim("If the Finder information of one item cannot be read, the other item gets its flags.")
            .Reason("Post-install processes the folder and its icon file separately."),
        Check("files", &failedFileCallsAreHarmless, kNeedsCleanEvents)
            .Claim("A failed call for the status file causes no harm.")
            .Reason("The check makes each call that finds or opens a file fail in turn."),
        Check("broken-list", &brokenFileIsLeft, {&PreInstallReturns, &PostInstallReturns})
            .Claim("A preferences file that cannot be parsed keeps its bytes.")
            .Reason("New values cannot be merged into an unreadable file. The user's data must not be lost."),
        Check("query", &queryWithoutMemoryIsHarmless, {&QueriesLeaveNothing})
            .Claim("QueryInterface causes no harm if there is no memory.")
            .Reason("The check makes the creation of the identifier object fail. The result and the output "
                    "pointer must agree."),
    }};

} // namespace xcodhost
