// Tests of the command line: wrong usage, sample volumes, streams.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using testing::HasSubstr;

namespace {

struct WrongUsage {
    const char* name;
    const char* order;  ///< The arguments. BUNDLE is a valid bundle, SHORT a file of 613 bytes.
    std::string report; ///< A part of the message.
};

class AWrongUsage : public testing::TestWithParam<WrongUsage> {};

TEST_P(AWrongUsage, IsReportedOnOneLineOfStandardError) {
    const TestBundle bundle;
    const TemporaryFolder files;
    const std::string shortFile = files.Write("short", std::string(613, '\0'));
    std::vector<std::string> arguments;
    std::istringstream words(GetParam().order);
    for (std::string word; words >> word;)
        arguments.push_back(word == "BUNDLE" ? bundle.Path() : word == "SHORT" ? shortFile : word);
    const HostTool run = RunHost(arguments);
    EXPECT_EQ(run.ExitStatus(), 2);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr(GetParam().report));
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;

    arguments.emplace_back("--json");
    const auto document = nlohmann::json::parse(RunHost(arguments).out);
    EXPECT_EQ(document["exitStatus"], 2);
    EXPECT_THAT(document["error"]["message"].get<std::string>(), HasSubstr(GetParam().report));
}

INSTANTIATE_TEST_SUITE_P(
    Command, AWrongUsage,
    testing::ValuesIn(std::vector<WrongUsage>{
        {"UnknownOption", "run BUNDLE --product 1 --bogus", "--bogus"},
        {"NoProduct", "run BUNDLE", "--product"},
        {"ProductIsNoNumber", "run BUNDLE --product 12x", "--product: \"12x\""},
        {"ProductIsTooLarge", "run BUNDLE --product 2147483648", "--product: \"2147483648\""},
        {"MessageIsNegative", "run BUNDLE --product 1 --message -1", "--message"},
        {"UnknownEvent", "run BUNDLE --product 1 --event mid", "--event: \"mid\""},
        {"TimeoutIsZero", "run BUNDLE --product 1 --timeout 0", "--timeout: \"0\""},
        {"TimeoutIsNaN", "run BUNDLE --product 1 --timeout nan", "--timeout: \"nan\""},
        {"SelectorIsOnlyAPrefix", "run BUNDLE --product 1 --selector 0x", "--selector: \"0x\""},
        {"EventAndMessage", "run BUNDLE --product 1 --message 4 --event pre", "--event"},
        {"ListWithoutASubject", "list", "A subcommand is required"},
        {"VolumeIsMissing", "run BUNDLE --product 1 --volume /nowhere", "/nowhere"},
        {"VolumeIsAFile", "run BUNDLE --product 1 --volume SHORT", "not a folder"},
        {"VolumeIsThisMachine", "run BUNDLE --product 1 --volume /", "/: the root directory of this machine"},
        {"ShownVolumeIsMissing", "show --volume /nowhere", "/nowhere"},
        {"BlockIsMissing", "run BUNDLE --block /nowhere", "/nowhere"},
        {"BlockIsShort", "run BUNDLE --block SHORT", "613 bytes"},
        {"BlockIsADevice", "run BUNDLE --block /dev/zero", "/dev/zero: not a file"},
        {"BlockAndProduct", "run BUNDLE --block SHORT --product 1", "--product and --block"},
        {"DryRunWithoutVolume", "run BUNDLE --product 1 --dry-run", "--dry-run: --volume is missing"},
        {"DirectOtherMessage", "run BUNDLE --product 1 --direct --message 4", "--direct"},
    }),
    [](const auto& row) { return row.param.name; });

TEST(Command, DeliversABlockFileUnchanged) {
    const TestBundle bundle;
    const TemporaryFolder files;
    std::string block(700, '\xEE');
    block.replace(0, 12, std::string("\x03\x00\x09\x00\x06\x00\x00\x00\x00\x00\x00\x80", 12));
    const HostTool run = RunHost({"run", bundle.Path(), "--block", files.Write("block", block)});
    EXPECT_THAT(run.out, HasSubstr("XCodMain(selector 3, message 9, product 6, language -286331154)\n"
                                   "  errorFlags 0x80000000 -> 0x00000001\n"));
    EXPECT_EQ(run.Verdict(), "FAIL error bit set by message 9 (0 changes)");
}

TEST(Command, AcceptsNegativeAndHexadecimalNumbers) {
    const TestBundle bundle;
    const HostTool run =
        RunHost({"run", bundle.Path(), "--product", "-1", "--language", "-2", "--selector", "0xFF"});
    EXPECT_THAT(run.out,
                HasSubstr("XCodMain(selector 255, message 2 (pre-install), product -1, language -2)\n"));
}

TEST(Command, MakesAndCompletesASampleVolume) {
    const TemporaryFolder folder;
    const std::string volume = (folder / "vol").string();
    const std::string status = volume + "/Library/Application Support/Korvane/Updater/install_status.txt";
    const std::string icon = volume + "/Applications/Korvane/Icon\r";
    EXPECT_EQ(RunHost({"volume", volume, "--status", "", "--no-icon"}).ExitStatus(), 0);
    EXPECT_TRUE(std::filesystem::exists(status));
    EXPECT_FALSE(std::filesystem::exists(icon));
    EXPECT_EQ(RunHost({"volume", volume, "--status", "other"}).ExitStatus(), 0);
    EXPECT_EQ(ReadBytes(status), "") << "an existing file has changed";
    EXPECT_TRUE(std::filesystem::exists(icon));
}

TEST(Command, RejectsADirectoryWithOtherFilesForASampleVolume) {
    const TemporaryFolder folder;
    folder.Write("precious");
    const HostTool run = RunHost({"volume", folder.Path()});
    EXPECT_EQ(run.ExitStatus(), 2);
    EXPECT_THAT(run.err, HasSubstr("not empty"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}

TEST(Command, ReportsAnOutputThatCannotBeWritten) {
    const TestBundle bundle;
    const HostTool full = RunHost({"run", bundle.Path(), "--product", "0"}, {}, {}, "/dev/full");
    EXPECT_EQ(full.ExitStatus(), 70);
    EXPECT_THAT(full.err, HasSubstr("No space left on device"));
    EXPECT_EQ(RunHost({"run", bundle.Path(), "--product", "0"}, {}, {}, "-").ExitStatus(), 0);
}

} // namespace
