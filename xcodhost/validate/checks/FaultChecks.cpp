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

/// A preferences file that was written holds whole values that belong there, or is what it was.
void expectNothingHalfWritten(CheckRun& run, const Outcome& outcome, const std::string& fault) {
    for (const auto& [domain, file] : run.CurrentVolume().preferences) {
        run.Expect(file.problem.empty(), fault + ": every preferences file can be read",
                   file.path + ' ' + file.problem);
    }
    for (const FileChange& change : outcome.changes.files) {
        run.Fail(fault + ": no file but preferences changes", Printable(change.path) + ": " + change.what);
    }
    for (const PreferenceChange& change : outcome.changes.preferences) {
        run.Expect(change.after.has_value(), fault + ": no preference is removed",
                   change.domain + ' ' + change.key);
    }
}

/// Delivers both events once for each call of this name that a good delivery makes, that call failing.
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
                macplatform::InjectFault({name, code, static_cast<unsigned>(skip)});
                const Outcome outcome = run.Deliver(Event(message, 4900));
                macplatform::CancelInjectedFaults();
                const std::string fault = "call " + std::to_string(skip + 1) + " of " + name + " fails";
                expectNothingHalfWritten(run, outcome, fault);
                run.Expect(outcome.flagsAfter == 0, fault + ": no error bit", Hex(outcome.flagsAfter, 8));
                const auto left = run.ObjectsLeft();
                run.Expect(left.empty(), fault + ": nothing leaked", left.empty() ? "" : left.front());
            }
        }
    }
}

void refusedPreferencesAreHarmless(CheckRun& run) {
    expectHarmless(run, {"CFPreferencesSetValue", "CFPreferencesSynchronize"}, 0);
}
void missingStringsAreHarmless(CheckRun& run) {
    expectHarmless(
        run, {"CFStringCreateWithCString", "CFStringCreateWithBytes", "CFStringCreateWithCharacters"}, 0);
}
void missingNumbersAreHarmless(CheckRun& run) { expectHarmless(run, {"CFNumberCreate"}, 0); }
void refusedFinderCallsAreHarmless(CheckRun& run) {
    expectHarmless(run,
                   {"CFURLCreateWithFileSystemPath", "CFURLGetFSRef", "FSPathMakeRef", "FSGetCatalogInfo",
                    "FSSetCatalogInfo"},
                   -5000);
}
void refusedFileCallsAreHarmless(CheckRun& run) {
    expectHarmless(run, {"access", "stat", "fopen", "open", "openat"}, EIO);
}

void finderFaultLeavesOther(CheckRun& run) {
    for (unsigned skip = 0; skip < 2; ++skip) {
        run.UseFreshVolume();
        run.Interface();
        macplatform::InjectFault({"FSGetCatalogInfo", -5000, skip});
        const Outcome outcome = run.Deliver(Event(kPostInstall, 4900));
        if (macplatform::CancelInjectedFaults() > 0) continue; // it does not ask this call for them
        run.Expect(outcome.changes.finderFlags.size() == 1, "the other item gets its flags all the same",
                   Describe(outcome.changes));
    }
}

/// Its bytes are none of a property list, so nothing can be added without losing them.
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
    macplatform::InjectFault({"CFUUIDCreateFromUUIDBytes", 0, 0});
    void* found = nullptr;
    const auto result = run.Bundle().RunCode({"QueryInterface", "no memory for the identifier", {}}, [&] {
        return static_cast<std::uint32_t>((*instance)->QueryInterface(instance, kHostInterface, &found));
    });
    macplatform::CancelInjectedFaults();
    run.Expect((result == 0) == (found != nullptr), "result and result place agree",
               Hex(result, 8) + (found ? ", a pointer" : ", null"));
    run.Expect(run.ObjectsLeft().empty(), "nothing leaked", Counted(run.ObjectsLeft().size(), "object"));
}

} // namespace

std::vector<Check> FaultChecks() {
    const std::vector<const char*> events = {"pre-install.nothing-else", "post-install.nothing-else",
                                             "process.objects"};
    return {
        {"faults.preferences",
         "Preferences that cannot be written are no error, and nothing is half-written or leaked.",
         "Each call that sets or synchronises a preference is made to fail in turn.", events,
         &refusedPreferencesAreHarmless},
        {"faults.no-string", "A text that the platform cannot make does no harm.",
         "Each call that makes a CFString is made to fail in turn.", events, &missingStringsAreHarmless},
        {"faults.no-number", "A number that the platform cannot make does no harm: the stored value stays.",
         "Setting a preference to null removes it.", events, &missingNumbersAreHarmless},
        {"faults.finder", "Refused Finder calls do no harm.",
         "Each call on the way to the Finder information is made to fail in turn.", events,
         &refusedFinderCallsAreHarmless},
        {"faults.finder-apart",
         "Where one item's Finder information cannot be read, the other is dressed all the same.",
         "The folder and its icon file are handled apart.",
         {"finder.folder", "finder.icon", "finder.other-items"},
         &finderFaultLeavesOther},
        {"faults.files", "Refused calls for the status file do no harm.",
         "Each call that looks for or opens a file is made to fail in turn.", events,
         &refusedFileCallsAreHarmless},
        {"faults.broken-list",
         "A preferences file that cannot be parsed keeps its bytes.",
         "What cannot be read cannot be merged with; the user's data come first.",
         {"dispatch.pre-install", "dispatch.post-install"},
         &brokenFileIsLeft},
        {"faults.query",
         "QueryInterface without memory does no harm.",
         "The identifier object cannot be made; the answer must be whole, either way.",
         {"interface.nothing-left"},
         &queryWithoutMemoryIsHarmless},
    };
}

} // namespace xcodhost
