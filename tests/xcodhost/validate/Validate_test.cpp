// The reports of `xcodhost validate` on good bundles and on bundles with one fault.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <set>

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

struct Validation {
    int status = 0;
    json document;

    std::vector<std::string> Failed() const {
        std::vector<std::string> ids;
        for (const json& check : document["bundles"][0]["checks"]) {
            if (check["state"] == "failed") ids.push_back(check["id"]);
        }
        return ids;
    }
    json Check(const std::string& id) const {
        for (const json& check : document["bundles"][0]["checks"]) {
            if (check["id"] == id) return check;
        }
        return {};
    }
};

Validation validate(const std::string& bundle, const std::string& more = {}) {
    const HostTool run = RunHostWith({"validate", bundle, "--json"}, more);
    return {run.ExitStatus(), json::parse(run.out)};
}

// Exit statuses of the tool.
constexpr int kFailed = 1;
constexpr int kNotLoaded = 3;
constexpr int kCrashed = 4;
constexpr int kTimeLimit = 5;

struct Fault {
    const char* name;
    const char* check; ///< The check that reports the fault.
    const char* seen;  ///< A part of the finding.
    int status = kFailed;
};

const Fault kFaults[] = {
    // name, check, part of the finding, exit status
    {"AgainBeforePostInstall", "dispatch.twice", "1 change: com.korvane.updater Again: (none)"},
    {"AlertInMain", "dispatch.wrong-selector-silent", "Unable to set"},
    {"AlertMissing", "steps.alert", "Stop alert 5000"},
    {"AlertOnUnknownProduct", "steps.silent", "Stop alert 5000"},
    {"AlertWithChoice", "steps.alert-buttons", "2 buttons"},
    {"AlertWithUnreadableFile", "status-file.failure-silent", "Unable to set"},
    {"AlignmentAssumed", "block.odd-address", "0x00000001"},
    {"AnyInterfaceGiven", "interface.others", "0x00000000"},
    {"AnyTypeAccepted", "factory.wrong-types", "an instance"},
    {"ApplicationsHidden", "finder.other-items", "/Applications: V invisible (0x4000)"},
    {"BothStepsOnPostInstall", "dispatch.post-install-alone", "InstalledProducts"},
    {"BothStepsOnPreInstall", "dispatch.pre-install-alone", "Lang"},
    {"BrokenPropertyListReplaced", "faults.broken-list", "bplist00"},
    {"CaseIgnored", "status-file.interval", "UpdateInterval: (integer) 2"},
    {"CountOf16Bits", "references.many", "4465"},
    {"CountStartsAtZero", "references.counting", "1"},
    {"Crash", "dispatch.pre-install", "crashed: SIGSEGV (Segmentation fault)", kCrashed},
    {"CrashInAlert", "steps.return", "crashed: SIGABRT (Aborted)", kCrashed},
    {"CurrentUser", "preferences.scope", "kCFPreferencesCurrentUser, kCFPreferencesAnyHost"},
    {"DefaultAllocatorOnly", "factory.allocator", "null with kCFAllocatorSystemDefault"},
    {"ErrorBitForStop", "steps.answer", "error flags 0x00000000"},
    {"ErrorBitMissingInMain", "dispatch.wrong-selector", "0x00000000"},
    {"ErrorBitMissingInSteps", "steps.error-bit", "0x00000000"},
    {"ErrorBitOnSuccess", "block.no-error", "0x00000001"},
    {"ErrorBitsCleared", "block.error-bits", "0x00000001"},
    {"ExceptionEscapes", "dispatch.post-install", "exception std::runtime_error \"no folder\"", kCrashed},
    {"Exit", "dispatch.pre-install", "ended the process: exit status 3", kCrashed},
    {"FailureNotStored", "status-file.failure-text", "InstallStatus: (none)"},
    {"FailureTextOther", "status-file.failure-text", "InstallStatus: (string) \"failed\""},
    {"FailureWithoutFile", "status-file.no-failure", "Error opening file"},
    {"FileCreated", "pre-install.nothing-else", "/Library/install.log: created"},
    {"FileLeftOpen", "process.descriptors", "8"},
    {"FirstLanguageStays", "post-install.replaces", "Tamblor Lang: (string) \"ja\""},
    {"FirstSlotFilled", "function-block.slots", "a pointer"},
    {"FirstVersionStays", "pre-install.replaces", "(integer) 9"},
    {"FlagsForKnownProductsOnly", "finder.unknown-product",
     "1 change: /Applications/Korvane/Icon\\r: V invisible (0x4000)"},
    {"FolderCreated", "finder.missing", "4 changes"},
    {"FolderStaysInvisible", "finder.folder", "0xFFFE"},
    {"FunctionBlockChanged", "function-block.constant", "a changed function block"},
    {"Hang", "dispatch.post-install", "no return within 1 s", kTimeLimit},
    {"HeapInstance", "factory.pointer-block", "NewPtr was not called"},
    {"HostFieldRead", "block.host-fields", "0x00000001"},
    {"HostInterfaceOnly", "interface.iunknown", "0x80000004"},
    {"IconAfterFolder", "faults.finder-apart", "2 changes"},
    {"IconBeforeFolder", "post-install.order", "Icon"},
    {"IconFirst", "finder.no-icon", "0x0000"},
    {"IconKeepsIconFlag", "finder.icon", "0xFFFE"},
    {"IdentifierLeaked", "interface.nothing-left", "UUID"},
    {"InstanceUsedAfterRelease", "references.inside-call", "crashed: SIGILL (Illegal instruction)", kCrashed},
    {"IntervalAlwaysTwo", "status-file.interval", "UpdateInterval: (integer) 2"},
    {"JapaneseAsFrench", "post-install.language", "Tamblor Lang: (string) \"fr\""},
    {"LabelLost", "finder.other-flags", "0xBBF0"},
    {"LanguageInBothDomains", "post-install.nothing-else", "Lang: (none) -> (string) \"en\""},
    {"LanguageInUpdaterDomain", "post-install.language", "no preferences file of this domain"},
    {"LastReleaseReturnsOne", "references.zero", "1"},
    {"LeakForFailedFinderCall", "faults.finder", "string \"no folder\", 1 reference"},
    {"LeakForLostPreference", "faults.preferences", "string \"lost\", 1 reference"},
    {"LowWordOfProduct", "pre-install.unknown-product", "InstalledProducts/Fusewright"},
    {"MemoryGrows", "process.growth", "objects"},
    {"MemoryLeaked", "process.growth", "bytes left"},
    {"MissingFileLeaks", "faults.files", "string \"no file\", 1 reference"},
    {"MissingMeansNever", "status-file.missing", "UpdateInterval: (integer) 0"},
    {"MoreStored", "pre-install.nothing-else", "Installer: (none) -> (string) \"VISE X\""},
    {"NegativeLanguage", "post-install.other-languages", "Fusewright Lang: (string) \"de\""},
    {"NeverWithUnreadableFile", "status-file.unreadable", "UpdateInterval: (integer) 0"},
    {"NewPtrUnchecked", "factory.no-memory", "crashed: SIGSEGV (Segmentation fault)", kCrashed},
    {"NoLanguageAfterFailure", "status-file.failure-rest", "no preferences file of this domain"},
    {"NoPostInstall", "bundle.exports", "PostInstall is not exported", kNotLoaded},
    {"NoReferenceForInterface", "interface.adds-reference", "1"},
    {"NoType", "factory.right-type", "returned null", kNotLoaded},
    {"NullBlockRead", "steps.null-block", "crashed: SIGSEGV (Segmentation fault)", kCrashed},
    {"OneProductWithoutInterval", "status-file.products", "UpdateInterval: (integer) 2"},
    {"OrderMatters", "dispatch.order", "1 change: com.korvane.updater Late: (none)"},
    {"OtherInstancesReset", "dispatch.two-instances", "0"},
    {"OtherMessageAccepted", "dispatch.other-messages", "UpdateInterval"},
    {"OtherStopAlert", "steps.stop-alert", "Stop alert 5001"},
    {"OtherVersion", "pre-install.version", "1.72"},
    {"OutputFlood", "dispatch.pre-install", "printed too much", kCrashed},
    {"PlaceNotCleared", "interface.clears-place", "not null"},
    {"PreferencesReplaced", "preferences.other-keys", "Fusewright Other: (none)"},
    {"ProcessLeft", "process.processes", "processes"},
    {"QueryIdentifierUnchecked", "faults.query", "crashed: SIGABRT (Aborted)", kCrashed},
    {"RecordNeverFreed", "references.frees", "still allocated"},
    {"ReferenceBesideSlot", "interface.through-slot", "0 calls of the replaced AddRef"},
    {"ReferenceForUnsupportedInterface", "interface.refusal-count", "35"},
    {"ReinstallationStored", "dispatch.second-run", "1 change: com.korvane.updater Reinstalled: (none)"},
    {"RejectedCallStores", "dispatch.wrong-selector-idle",
     "1 change: com.korvane.updater UpdateInterval: (none)"},
    {"RejectedStepStores", "steps.refused-idle", "InstallStatus"},
    {"ScratchInBlock", "block.rest", "bytes changed: 20 to 20"},
    {"SharedCount", "factory.two-instances", "3"},
    {"SignalIgnored", "process.state", "another handler for signal 13"},
    {"StatusFileEmptied", "status-file.kept", "contents changed"},
    {"StepFlagsReplaced", "steps.other-bits", "0x00000001"},
    {"StepsWithoutMessage", "steps.same-effects", "nothing changed"},
    {"StopAlertMissing", "steps.stop-alert", "Unable to set"},
    {"StopAlertTwice", "steps.alerts-once", "Stop alert 5000, Stop alert 5000"},
    {"StringLeaked", "process.objects", "string \"left behind\", 1 reference"},
    {"StringUnchecked", "faults.no-string", "crashed: SIGABRT (Aborted)", kCrashed},
    {"SymbolToo", "bundle.exports-only", "also exports gKorvaneVersion"},
    {"SymbolUndefined", "bundle.loads", "undefined symbol: function_of_no_library", kNotLoaded},
    {"SynchronisedFirst", "pre-install.order", "CFPreferencesSynchronize"},
    {"TextPrinted", "process.silent", "icon hidden"},
    {"ThreadLeft", "process.threads", "started"},
    {"TwoReferencesForInterface", "interface.adds-reference", "3"},
    {"UnknownInterfaceOnly", "interface.host", "0x80000004"},
    {"UnknownProductStored", "post-install.unknown-product", "com.korvane.unknown Lang"},
    {"ValueRemovedWithoutNumber", "faults.no-number", "UpdateInterval"},
    {"VersionInOwnDomain", "pre-install.version", "no preferences file of this domain"},
    {"VersionOfSpacelessName", "pre-install.version", "(none)"},
    {"WriteOutside", "volume.nothing-outside", "openat \"/tmp/xcodhost-corpus.log\""},
    {"WrongInterfaceCode", "interface.others", "0x80004005"},
};

class PluginFault : public testing::TestWithParam<Fault> {};

TEST_P(PluginFault, IsReportedByExactlyOneCheck) {
#ifdef IS_SANITIZED
    if (GetParam().name == std::string("MemoryLeaked"))
        GTEST_SKIP() << "the sanitizer replaces malloc, which then reports no sizes";
#endif
    const CorpusBundle bundle(GetParam().name);
    const bool hangs = GetParam().status == kTimeLimit;
    const Validation found = validate(bundle.Path(), hangs ? "--timeout 1" : "--timeout 60");
    EXPECT_THAT(found.Failed(), ElementsAre(GetParam().check));
    EXPECT_EQ(found.status, GetParam().status);
    const json check = found.Check(GetParam().check);
    EXPECT_THAT(check["findings"].dump(),
                HasSubstr(json(GetParam().seen).dump().substr(1, std::string(GetParam().seen).size())));
    EXPECT_EQ(check["repeat"], "xcodhost validate " + bundle.Path() + " --include " + GetParam().check);
}

INSTANTIATE_TEST_SUITE_P(Validate, PluginFault, testing::ValuesIn(kFaults),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Validate, RejectsOtherFactoryNamesAndMissingBundles) {
    const CorpusBundle bundle("None", "PreInstall");
    EXPECT_EQ(validate(bundle.Path(), "--include bundle.factory-name").status, 1);
    EXPECT_EQ(validate("/not/there.bundle").status, 3);
}

TEST(Validate, PassesGoodBundles) {
    const CorpusBundle other("None"); // an implementation without our code
    const HostTool run = RunHost({"validate", POSTINSTALL_BUNDLE, other.Path()});
    EXPECT_EQ(run.ExitStatus(), 0) << run.out;
    EXPECT_THAT(run.out, Not(HasSubstr("FAIL")));
    EXPECT_THAT(run.Verdict(), testing::MatchesRegex("PASS [0-9]+ checks"));
}

TEST(Validate, HasABrokenBundleForEachCheck) {
    std::set<std::string> broken = {"bundle.property-list", "bundle.factory", "bundle.factory-name",
                                    "bundle.executable", "bundle.architecture"};
    for (const Fault& fault : kFaults) broken.insert(fault.check);
    const json list = json::parse(RunHost({"list", "checks", "--json"}).out);
    std::set<std::string> ids;
    for (const json& check : list["checks"]) {
        EXPECT_TRUE(ids.insert(check["id"]).second) << check["id"];
    }
    EXPECT_GE(ids.size(), 40u);
    EXPECT_EQ(broken, ids);
    for (const json& check : list["checks"]) {
        for (const std::string dependency : check["needs"])
            EXPECT_EQ(ids.count(dependency), 1u) << dependency;
    }
}

TEST(Validate, RunsTheSelectedChecks) {
    const CorpusBundle bundle("AlertMissing");
    const struct {
        const char* options;
        int status;
        const char* verdict;
    } rows[] = {
        {"--include steps.alert", 1, "FAIL 1 of 1 (first: steps.alert)"},
        {"--include steps.stop-alert references.zero", 0, "PASS 2 checks"},
        {"--include references", 0, "PASS 5 checks"},
        {"--include steps.* --exclude steps.a*", 0, "PASS 8 checks"},
        {"--include steps.alert --exclude steps", 1, "FAIL 0 of 0 (no check was run)"},
    };
    for (const auto& row : rows) {
        const HostTool run = RunHostWith({"validate", bundle.Path()}, row.options);
        EXPECT_EQ(run.Verdict(), row.verdict) << run.out;
        EXPECT_EQ(run.ExitStatus(), row.status);
    }
    const HostTool wrong = RunHost({"validate", bundle.Path(), "--include", "steps.nothing"});
    EXPECT_EQ(wrong.ExitStatus(), 2);
    EXPECT_THAT(wrong.err, HasSubstr("\"steps.nothing\" matches no check"));
    EXPECT_EQ(RunHost({"validate", bundle.Path(), "--junit", "/not/there/file"}).ExitStatus(), 2);
}

TEST(Validate, ExplainSuggestsSimilarChecks) {
    const HostTool wrong = RunHost({"explain", "stop"});
    EXPECT_EQ(wrong.ExitStatus(), 2);
    EXPECT_THAT(wrong.err, HasSubstr("steps.stop-alert"));
}

/// Runs a Python program with the file as its argument. Returns the status, which is 0 if its assertions
/// hold. Uses the system's Python, which has the packaged modules.
int python(const std::string& program, const std::string& file) {
    const TemporaryFolder folder;
    return std::system(("/usr/bin/python3 " + folder.Write("program.py", program) + " " + file).c_str());
}

TEST(Validate, WritesReportsThatOtherProgramsRead) {
    const CorpusBundle bundle("AlertMissing");
    const TemporaryFolder folder;
    const std::string junit = folder.Write("junit.xml", "old");
    const std::string html = folder.Write("page.html", "old");
    EXPECT_EQ(RunHost({"validate", bundle.Path(), "--junit", junit, "--html", html}).ExitStatus(), 1);
    EXPECT_EQ(python("import sys\n"
                     "from junitparser import JUnitXml\n"
                     "xml = JUnitXml.fromfile(sys.argv[1])\n"
                     "cases = [case for suite in xml for case in suite]\n"
                     "failed = [case.name for case in cases if any(type(r).__name__ == 'Failure' for r in "
                     "case.result)]\n"
                     "skipped = [case.name for case in cases if any(type(r).__name__ == 'Skipped' for r in "
                     "case.result)]\n"
                     "assert failed == ['steps.alert'] and skipped == ['steps.answer'], (failed, skipped)\n"
                     "suite = list(xml)[0]\n"
                     "assert (suite.tests, suite.failures, suite.skipped) == (len(cases), 1, 1)\n",
                     junit),
              0);
    EXPECT_EQ(
        python(
            "import sys\n"
            "from html.parser import HTMLParser\n"
            "class Page(HTMLParser):\n"
            "    open, text = [], ''\n"
            "    def handle_starttag(self, tag, attrs):\n"
            "        assert tag not in ('link', 'script', 'img') and not dict(attrs).get('src')\n"
            "        if tag != 'meta': self.open.append(tag)\n"
            "    def handle_endtag(self, tag): assert self.open.pop() == tag\n"
            "    def handle_data(self, data): self.text += data\n"
            "page = Page()\n"
            "page.feed(open(sys.argv[1], encoding='utf-8').read())\n"
            "assert not page.open\n"
            "for part in ('FAIL 1 of', '3100 Korvane Restora', 'UpdateInterval', '(integer) 2', '(none)'):\n"
            "    assert part in page.text, part\n",
            html),
        0);
}

} // namespace
