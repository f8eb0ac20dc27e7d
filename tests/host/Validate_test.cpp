// What validate tells of good bundles and of each that has one fault.

#include "HostTool.h"
#include "TestBundle.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <set>

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
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

Validation Validate(const std::string& bundle, const std::vector<std::string>& more = {}) {
    std::vector<std::string> arguments{"validate", bundle, "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const HostTool run = RunHost(arguments);
    return {run.ExitStatus(), json::parse(run.out)};
}

struct Fault {
    const char* name;
    int status;
    const char* check; ///< The one that it breaks.
    const char* seen;  ///< A part of what that says.
};

const Fault kFaults[] = {
    {"AgainBeforePostInstall", 1, "dispatch.twice",
     "1 change: com.korvane.updater Again: (none) -> (string) \"yes"},
    {"AlertInMain", 1, "dispatch.wrong-selector-silent", "Unable to set"},
    {"AlertMissing", 1, "steps.alert", "Stop alert 5000"},
    {"AlertOnUnknownProduct", 1, "steps.silent", "Stop alert 5000"},
    {"AlertWithChoice", 1, "steps.alert-buttons", "2 buttons"},
    {"AlertWithUnreadableFile", 1, "status-file.failure-silent", "Unable to set"},
    {"AlignmentAssumed", 1, "block.odd-address", "0x00000001"},
    {"AnyInterfaceGiven", 1, "interface.others", "0x00000000"},
    {"AnyTypeAccepted", 1, "factory.wrong-types", "an instance"},
    {"ApplicationsHidden", 1, "finder.other-items", "/Applications: V invisible (0x4000)"},
    {"BothStepsOnPostInstall", 1, "dispatch.post-install-alone", "InstalledProducts"},
    {"BothStepsOnPreInstall", 1, "dispatch.pre-install-alone", "Lang"},
    {"BrokenListReplaced", 1, "faults.broken-list", "bplist00"},
    {"CaseIgnored", 1, "status-file.interval", "com.korvane.updater UpdateInterval: (integer) 2"},
    {"Chatter", 1, "process.silent", "icon hidden"},
    {"CountOf16Bits", 1, "references.many", "4465"},
    {"CountStartsAtZero", 1, "references.counting", "1"},
    {"Crash", 4, "dispatch.pre-install", "crashed: SIGSEGV (Segmentation fault)"},
    {"CrashInAlert", 4, "steps.return", "crashed: SIGABRT (Aborted)"},
    {"CurrentUser", 1, "preferences.scope", "kCFPreferencesCurrentUser, kCFPreferencesAnyHost"},
    {"DefaultAllocatorOnly", 1, "factory.allocator", "null with kCFAllocatorSystemDefault"},
    {"ErrorBitForStop", 1, "steps.answer", "error flags 0x00000000"},
    {"ErrorBitMissingInMain", 1, "dispatch.wrong-selector", "0x00000000"},
    {"ErrorBitMissingInSteps", 1, "steps.error-bit", "0x00000000"},
    {"ErrorBitOnSuccess", 1, "block.no-error", "0x00000001"},
    {"ErrorBitsCleared", 1, "block.error-bits", "0x00000001"},
    {"ErrorForLostPreference", 1, "faults.preferences", "string \"lost\", 1 reference"},
    {"ErrorForRefusedFinder", 1, "faults.finder", "string \"no folder\", 1 reference"},
    {"ExceptionLetOut", 4, "dispatch.post-install", "exception std::runtime_error \"no folder\""},
    {"Exit", 4, "dispatch.pre-install", "ended the process: exit status 3"},
    {"FailureNotTold", 1, "status-file.failure-text", "com.korvane.updater InstallStatus: (none)"},
    {"FailureTextOther", 1, "status-file.failure-text",
     "com.korvane.updater InstallStatus: (string) \"failed\""},
    {"FailureWithoutFile", 1, "status-file.no-failure", "Error opening file"},
    {"FileLeftOpen", 1, "process.descriptors", "8"},
    {"FileMade", 1, "pre-install.nothing-else", "/Library/install.log: created"},
    {"FileTakenForGranted", 1, "faults.files", "string \"no file\", 1 reference"},
    {"FirstLanguageStays", 1, "post-install.replaces",
     "com.korvane.audioplugins.Tamblor Lang: (string) \"ja\""},
    {"FirstSlotFilled", 1, "function-block.slots", "it is not null"},
    {"FirstVersionStays", 1, "pre-install.replaces", "(integer) 9"},
    {"FolderMade", 1, "finder.missing", "4 changes"},
    {"FolderStaysInvisible", 1, "finder.folder", "0xFFFE"},
    {"FunctionBlockChanged", 1, "function-block.constant", "it has changed after both events"},
    {"Hang", 5, "dispatch.post-install", "no return within 1 s"},
    {"HeapInstance", 1, "factory.pointer-block", "NewPtr was not called"},
    {"HostFieldRead", 1, "block.host-fields", "0x00000001"},
    {"HostInterfaceOnly", 1, "interface.iunknown", "0x80000004"},
    {"IconAfterFolder", 1, "faults.finder-apart", "2 changes"},
    {"IconBeforeFolder", 1, "post-install.order", "Icon"},
    {"IconFirst", 1, "finder.no-icon", "0x0000"},
    {"IconKeepsIconFlag", 1, "finder.icon", "0xFFFE"},
    {"IdentifierLeaked", 1, "interface.nothing-left", "UUID"},
    {"InstanceTouchedAfterRelease", 4, "references.inside-call", "crashed: SIGILL (Illegal instruction)"},
    {"IntervalAlwaysTwo", 1, "status-file.interval", "com.korvane.updater UpdateInterval: (integer) 2"},
    {"JapaneseAsFrench", 1, "post-install.language",
     "com.korvane.audioplugins.Tamblor Lang: (string) \"fr\""},
    {"KnownProductsDressed", 1, "finder.unknown-product",
     "1 change: /Applications/Korvane/Icon\\r: V invisible (0x4000)"},
    {"LabelLost", 1, "finder.other-flags", "0xBBF0"},
    {"LanguageInBothDomains", 1, "post-install.nothing-else",
     "com.korvane.updater Lang: (none) -> (string) \"en\""},
    {"LanguageInUpdaterDomain", 1, "post-install.language", "there is no preferences file of this domain"},
    {"LastReleaseAnswersOne", 1, "references.zero", "1"},
    {"LowWordOfProduct", 1, "pre-install.unknown-product", "InstalledProducts/Fusewright"},
    {"MemoryGrows", 1, "process.growth", "objects"},
    {"MemoryLeaked", 1, "process.growth", "bytes more"},
    {"MemoryTakenForGranted", 4, "factory.no-memory", "crashed: SIGSEGV (Segmentation fault)"},
    {"MissingMeansNever", 1, "status-file.missing", "com.korvane.updater UpdateInterval: (integer) 0"},
    {"MoreStored", 1, "pre-install.nothing-else",
     "com.korvane.updater Installer: (none) -> (string) \"VISE X\""},
    {"NegativeLanguage", 1, "post-install.other-languages",
     "com.korvane.audioplugins.Fusewright Lang: (string) \"de\""},
    {"NeverWithUnreadableFile", 1, "status-file.unreadable",
     "com.korvane.updater UpdateInterval: (integer) 0"},
    {"NoLanguageAfterFailure", 1, "status-file.failure-rest", "there is no preferences file of this domain"},
    {"NoPostInstall", 3, "bundle.exports", "PostInstall is not exported"},
    {"NoReferenceForInterface", 1, "interface.adds-reference", "1"},
    {"NoType", 3, "factory.right-type", "answered null"},
    {"NullBlockRead", 4, "steps.null-block", "crashed: SIGSEGV (Segmentation fault)"},
    {"OneProductWithoutInterval", 1, "status-file.products",
     "com.korvane.updater UpdateInterval: (integer) 2"},
    {"OrderMatters", 1, "dispatch.order", "1 change: com.korvane.updater Late: (none) -> (string) \"yes\""},
    {"OtherInstancesReset", 1, "dispatch.two-instances", "0"},
    {"OtherMessageTaken", 1, "dispatch.other-messages", "UpdateInterval"},
    {"OtherStopAlert", 1, "steps.stop-alert", "Stop alert 5001"},
    {"OtherVersion", 1, "pre-install.version", "1.72"},
    {"OutputFlood", 4, "dispatch.pre-install", "flooded the host's output"},
    {"PlaceNotCleared", 1, "interface.clears-place", "it is not null"},
    {"PreferencesReplaced", 1, "preferences.other-keys", "com.korvane.audioplugins.Fusewright Other: (none)"},
    {"ProcessLeft", 1, "process.processes", "processes"},
    {"QueryTakesMemoryForGranted", 4, "faults.query", "crashed: SIGABRT (Aborted)"},
    {"RecordNeverFreed", 1, "references.frees", "it is still allocated"},
    {"ReferenceBesideSlot", 1, "interface.through-slot", "0 calls of a slot that was replaced"},
    {"ReferenceForRefusal", 1, "interface.refusal-count", "35"},
    {"RefusalStored", 1, "steps.refused-idle", "InstallStatus"},
    {"ReinstallationNoted", 1, "dispatch.second-run",
     "1 change: com.korvane.updater Reinstalled: (none) -> (string"},
    {"ScratchInBlock", 1, "block.rest", "bytes changed: 20 to 20"},
    {"SharedCount", 1, "factory.two-instances", "3"},
    {"SignalIgnored", 1, "process.state", "another handler for signal 13"},
    {"StatusFileEmptied", 1, "status-file.kept", "contents changed"},
    {"StepFlagsReplaced", 1, "steps.other-bits", "0x00000001"},
    {"StepsWithoutMessage", 1, "steps.same-effects", "nothing changed"},
    {"StopAlertMissing", 1, "steps.stop-alert", "Unable to set"},
    {"StopAlertTwice", 1, "steps.alerts-once", "Stop alert 5000, Stop alert 5000"},
    {"StringLeaked", 1, "process.objects", "string \"left behind\", 1 reference"},
    {"StringTakenForGranted", 4, "faults.no-string", "crashed: SIGABRT (Aborted)"},
    {"SymbolToo", 1, "bundle.exports-only", "also korvane_version"},
    {"SymbolUndefined", 3, "bundle.loads", "undefined symbol: function_of_no_library"},
    {"SynchronisedFirst", 1, "pre-install.order", "CFPreferencesSynchronize"},
    {"ThreadLeft", 1, "process.threads", "more"},
    {"TwoReferencesForInterface", 1, "interface.adds-reference", "3"},
    {"UnknownInterfaceOnly", 1, "interface.host", "0x80000004"},
    {"UnknownProductStored", 1, "post-install.unknown-product", "com.korvane.unknown Lang"},
    {"ValueRemovedWithoutNumber", 1, "faults.no-number", "com.korvane.updater UpdateInterval"},
    {"VersionInOwnDomain", 1, "pre-install.version", "there is no preferences file of this domain"},
    {"VersionOfSpacelessName", 1, "pre-install.version", "(none)"},
    {"WorkInSpiteOfRefusal", 1, "dispatch.wrong-selector-idle",
     "1 change: com.korvane.updater UpdateInterval: (none) -> (int"},
    {"WriteOutside", 1, "volume.nothing-outside", "openat \"/tmp/xcodhost-corpus.log\""},
    {"WrongInterfaceCode", 1, "interface.others", "0x80004005"},
};

class AFault : public testing::TestWithParam<Fault> {};

TEST_P(AFault, IsFoundByTheCheckThatItBreaksAndNoOther) {
#ifdef __SANITIZE_ADDRESS__
    if (GetParam().name == std::string("MemoryLeaked"))
        GTEST_SKIP() << "the sanitizer allocates, and tells nobody";
#endif
    const CorpusBundle bundle(GetParam().name);
    const bool hangs = GetParam().status == 5;
    const Validation found = Validate(bundle.Path(), {"--timeout", hangs ? "1" : "60"});
    EXPECT_THAT(found.Failed(), ElementsAre(GetParam().check));
    EXPECT_EQ(found.status, GetParam().status);
    const json check = found.Check(GetParam().check);
    EXPECT_THAT(check["findings"].dump(),
                HasSubstr(json(GetParam().seen).dump().substr(1, std::string(GetParam().seen).size())));
    EXPECT_EQ(check["repeat"], "xcodhost validate " + bundle.Path() + " --include " + GetParam().check);
}

INSTANTIATE_TEST_SUITE_P(Validate, AFault, testing::ValuesIn(kFaults),
                         [](const auto& row) { return std::string(row.param.name); });

struct BrokenBundle {
    const char* name;
    const char* check;
    std::string infoList;
    std::string code; ///< Empty: none.
};

class ABrokenBundle : public testing::TestWithParam<BrokenBundle> {};

/// A 64-bit executable of a processor that runs none of these tests.
std::string ForeignExecutable() {
    std::string elf(64, '\0');
    elf.replace(0, 7,
                "\x7F"
                "ELF\x02\x01\x01");
    elf[16] = 3;
    elf[18] = static_cast<char>(0xF3);
    elf[20] = 1;
    elf[52] = 64;
    return elf;
}

TEST_P(ABrokenBundle, CannotBeLoaded) {
    const TestBundle bundle(GetParam().infoList, GetParam().code);
    const Validation found = Validate(bundle.Path());
    ASSERT_THAT(found.Failed(), Not(IsEmpty()));
    EXPECT_EQ(found.Failed().front(), GetParam().check);
    EXPECT_EQ(found.status, 3);
}

INSTANTIATE_TEST_SUITE_P(Validate, ABrokenBundle,
                         testing::ValuesIn(std::vector<BrokenBundle>{
                             {"NoList", "bundle.property-list", "", "plug-in"},
                             {"NoPropertyList", "bundle.property-list", "rubbish", "plug-in"},
                             {"OtherType", "bundle.factory",
                              InfoList("MyFactory", "00000000-0000-0000-0000-000000000001"), "plug-in"},
                             {"NoExecutable", "bundle.executable", InfoList("MyFactory"), ""},
                             {"NotExecutable", "bundle.executable", InfoList("MyFactory"), "text"},
                             {"OtherProcessor", "bundle.architecture", InfoList("MyFactory"),
                              ForeignExecutable()},
                         }),
                         [](const auto& row) { return row.param.name; });

TEST(Validate, ToldFactoryNameIsTheInstallers) {
    const CorpusBundle bundle("None", "PreInstall");
    EXPECT_EQ(Validate(bundle.Path(), {"--include", "bundle.factory-name"}).status, 1);
    EXPECT_EQ(Validate("/not/there.bundle").status, 3);
}

TEST(Validate, PassesGoodBundles) {
    const CorpusBundle other("None"); // shares no line with ours
    const HostTool run = RunHost({"validate", POSTINSTALL_BUNDLE, other.Path()});
    EXPECT_EQ(run.ExitStatus(), 0) << run.out;
    EXPECT_THAT(run.out, Not(HasSubstr("FAIL")));
    EXPECT_THAT(run.Verdict(), testing::MatchesRegex("PASS [0-9]+ checks"));
}

TEST(Validate, HasForEachCheckABundleThatBreaksIt) {
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
        for (const std::string need : check["needs"]) EXPECT_EQ(ids.count(need), 1u) << need;
    }
}

struct Selection {
    std::vector<std::string> options;
    int status;
    std::string verdict;
};

TEST(Validate, RunsWhatIsChosen) {
    const CorpusBundle bundle("AlertMissing");
    const std::vector<Selection> rows = {
        {{"--include", "steps.alert"}, 1, "FAIL 1 of 1 (first: steps.alert)"},
        {{"--include", "steps.stop-alert", "references.zero"}, 0, "PASS 2 checks"},
        {{"--include", "references"}, 0, "PASS 5 checks"},
        {{"--include", "steps.*", "--exclude", "steps.a*"}, 0, "PASS 8 checks"},
        {{"--include", "steps.alert", "--exclude", "steps"}, 1, "FAIL 0 of 0 (no check was run)"},
    };
    for (const Selection& row : rows) {
        std::vector<std::string> arguments{"validate", bundle.Path()};
        arguments.insert(arguments.end(), row.options.begin(), row.options.end());
        const HostTool run = RunHost(arguments);
        EXPECT_EQ(run.Verdict(), row.verdict) << run.out;
        EXPECT_EQ(run.ExitStatus(), row.status);
    }
    const HostTool wrong = RunHost({"validate", bundle.Path(), "--include", "steps.nothing"});
    EXPECT_EQ(wrong.ExitStatus(), 2);
    EXPECT_THAT(wrong.err, HasSubstr("\"steps.nothing\" matches no check"));
    EXPECT_EQ(RunHost({"validate", bundle.Path(), "--junit", "/not/there/file"}).ExitStatus(), 2);
}

TEST(Validate, ExplainsAChecks) {
    EXPECT_THAT(RunHost({"explain", "steps.alert"}).out, HasSubstr("needs  steps.return"));
    const HostTool wrong = RunHost({"explain", "stop"});
    EXPECT_EQ(wrong.ExitStatus(), 2);
    EXPECT_THAT(wrong.err, HasSubstr("steps.stop-alert"));
}

/// Runs a program with the system's Python, which has the packaged modules; it ends with 0 where it finds the
/// file as it must be.
int Python(const std::string& program, const std::string& file) {
    const TemporaryFolder folder;
    return std::system(("/usr/bin/python3 " + folder.Write("program.py", program) + " " + file).c_str());
}

TEST(Validate, WritesFilesThatOthersRead) {
    const CorpusBundle bundle("AlertMissing");
    const TemporaryFolder folder;
    const std::string junit = folder.Write("junit.xml", "old");
    const std::string html = folder.Write("page.html", "old");
    EXPECT_EQ(RunHost({"validate", bundle.Path(), "--junit", junit, "--html", html}).ExitStatus(), 1);
    EXPECT_EQ(Python("import sys\n"
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
        Python(
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
