// Tests that a run reports the faults of a bundle and is not affected by them.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <sys/stat.h>
#include <sys/xattr.h>

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

std::string call(const std::string& product, const std::string& function = "XCodMain") {
    return function + "(selector 1000, message 2 (pre-install), product " + product + ", language 0)";
}

std::string crashIn(const std::string& place) {
    return "FAIL crashed in " + place + ": SIGSEGV (Segmentation fault)";
}

std::string escapeOf(const std::string& exception, const std::string& place) {
    return "FAIL exception " + exception + " escaped from " + place;
}

struct RunFault {
    const char* name;
    const char* options;
    int status;
    std::string verdict;
};

class ARunFault : public testing::TestWithParam<RunFault> {};

TEST_P(ARunFault, IsReportedWithTheCallAndTheStatus) {
    const TestBundle bundle;
    const TemporaryFolder scratch;
    const HostTool run = RunHostWith({"run", bundle.Path()}, GetParam().options, scratch.Path());
    EXPECT_EQ(run.Verdict(), GetParam().verdict) << run.out << run.err;
    EXPECT_EQ(run.ExitStatus(), GetParam().status);
    EXPECT_TRUE(std::filesystem::is_empty(scratch.Path())) << "the scratch volume still exists";
}

const RunFault kFaults[] = {
    // name, options, exit status, verdict
    {"NoFault", "--product 0", 0, "DONE 0 changes"},
    {"Crash", "--product 1", 4, crashIn(call("1"))},
    {"CrashWhenDirect", "--product 1 --direct --event pre", 4, crashIn(call("1", "PreInstall"))},
    {"Hang", "--product 2 --timeout 0.2", 5, "FAIL no return within 0.2 s in " + call("2")},
    {"Exception", "--product 3", 4, escapeOf("std::runtime_error \"no good\"", call("3"))},
    {"ThrownNumber", "--product 4", 4, escapeOf("int", call("4"))},
    {"Exit", "--product 5", 4, "FAIL ended the process in " + call("5") + ": exit status 7"},
    {"ErrorBit", "--product 6", 1, "FAIL error bit set by pre-install (0 changes)"},
    {"LaterErrorBit", "--product 6 --event post", 1, "FAIL error bit set by post-install (0 changes)"},
    {"ProcessLeftBehind", "--product 9", 0, "DONE 0 changes"},
    {"AlertsWithoutEnd", "--product 13 --timeout 0.2", 5, "FAIL no return within 0.2 s in " + call("13")},
    {"StandardInputIsEmpty", "--product 17", 0, "DONE 0 changes"},
};

INSTANTIATE_TEST_SUITE_P(Run, ARunFault, testing::ValuesIn(kFaults),
                         [](const auto& row) { return row.param.name; });

TEST(Run, ReportsChangedBytesOutsideTheErrorFlags) {
    const TestBundle bundle;
    const HostTool run = RunHost({"run", bundle.Path(), "--product", "7", "--event", "pre"});
    EXPECT_THAT(run.out, HasSubstr("other bytes of the parameter block changed: 20 to 613\n"));
    EXPECT_EQ(run.ExitStatus(), 0);
}

TEST(Run, PrintsTheOutputOfTheBundleOnStandardError) {
    const TestBundle bundle;
    const HostTool run = RunHost({"run", bundle.Path(), "--product", "8", "--json"});
    EXPECT_EQ(nlohmann::json::parse(run.out)["exitStatus"], 0);
    EXPECT_THAT(run.err, HasSubstr("printed by the bundle"));
}

TEST(Run, FailsIfTheBundleClosesTheDescriptorsOfTheHost) {
    const TestBundle bundle;
    EXPECT_EQ(RunHost({"run", bundle.Path(), "--product", "10"}).ExitStatus(), 4);
}

TEST(Run, RemovesTheScratchVolumeAfterASignal) {
    const TestBundle bundle;
    const TemporaryFolder scratch;
    const HostTool run = RunHost({"run", bundle.Path(), "--product", "11"}, {}, scratch.Path());
    EXPECT_TRUE(WIFSIGNALED(run.status) && WTERMSIG(run.status) == SIGTERM) << run.status;
    EXPECT_TRUE(std::filesystem::is_empty(scratch.Path()));
}

TEST(Run, GivesThePlugInTheChosenButton) {
    const TestBundle bundle; // sets bit 16 for "No"
    const auto run = [&bundle](const char* who, const std::string& input) {
        return RunHost({"run", bundle.Path(), "--product", "12", "--event", "pre", "--answers", who}, input)
            .out;
    };
    EXPECT_THAT(run("No", ""), HasSubstr("0x00000000 -> 0x00010000"));
    EXPECT_THAT(run("ask", "2\n"), HasSubstr("0x00000000 -> 0x00010000"));
    EXPECT_THAT(run("first", "2\n"), HasSubstr("(unchanged)"));
}

TEST(Run, ListsChangedFilesWithEscapedNames) {
    const TestBundle bundle;
    const TemporaryFolder volume;
    volume.Write("Library/old.txt");
    volume.Write("Library/gone.txt");
    volume.Write("Users/kept.txt");
    chmod((volume / "Library/old.txt").c_str(), 0644);
    const HostTool run =
        RunHost({"run", bundle.Path(), "--product", "15", "--event", "pre", "--volume", volume.Path()});
    EXPECT_THAT(run.out, HasSubstr("\n/Library/gone.txt: removed\n"
                                   "/Library/old.txt: mode 0644 -> 0600\n"
                                   "/Users/new \\x1B.txt: created\n"
                                   "DONE 3 changes\n"));
    EXPECT_EQ(ReadBytes(volume / "Users/new \x1B.txt"), "new");
}

TEST(Run, DoesNotChangeTheVolumeInADryRun) {
    const TestBundle bundle;
    const TemporaryFolder volume;
    const TemporaryFolder scratch;
    volume.Write("Library/gone.txt", "kept");
    const std::string old = volume.Write("Library/old.txt");
    ASSERT_EQ(setxattr(old.c_str(), "user.com.apple.FinderInfo", std::string(32, '\x40').data(), 32, 0), 0);
    std::filesystem::create_directories(volume / "Users");
    std::filesystem::create_symlink("/nowhere", volume / "Users/link");
    const HostTool run =
        RunHost({"run", bundle.Path(), "--product", "15", "--volume", volume.Path(), "--dry-run"}, {},
                scratch.Path());
    EXPECT_THAT(run.Verdict(), StartsWith("DONE 3 changes")) << run.out << run.err;
    EXPECT_EQ(ReadBytes(volume / "Library/gone.txt"), "kept");
    EXPECT_TRUE(std::filesystem::is_empty(scratch.Path()));
}

TEST(Run, ReportsAPreferencesFileThatTheRunBroke) {
    const TestBundle bundle;
    const HostTool run = RunHost({"run", bundle.Path(), "--product", "16"});
    EXPECT_THAT(run.out, HasSubstr("com.example.broken: /Library/Preferences/com.example.broken.plist "
                                   "is not a property list; the run caused this\n"));
}

TEST(Run, ReportsACrashInTheFactory) {
    const TestBundle bundle(InfoPlist("MakeCrash"));
    const HostTool run = RunHost({"run", bundle.Path(), "--product", "0"});
    EXPECT_THAT(run.Verdict(), StartsWith("FAIL crashed in CFPlugInInstanceCreate(factory A0A0A0A0-"));
    EXPECT_EQ(run.ExitStatus(), 4);
}

} // namespace
