// Runs the Mac executable of the plug-in and the Linux executable, and compares their calls and effects.

#include "support/HostTool.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <array>
#include <functional>
#include <map>
#include <sys/xattr.h>

using nlohmann::json;
using testing::HasSubstr;

namespace {

const std::string kStatusFile = "Library/Application Support/Korvane/Updater/install_status.txt";

/// Returns the contents of a volume: the Finder information and the bytes of each item, by path.
std::map<std::string, std::string> contentsOf(const std::filesystem::path& volume) {
    std::map<std::string, std::string> items;
    for (const auto& item : std::filesystem::recursive_directory_iterator(volume)) {
        std::array<char, 32> info{};
        getxattr(item.path().c_str(), "user.com.apple.FinderInfo", info.data(), info.size());
        std::string& content = items[item.path().lexically_relative(volume)];
        content.assign(info.begin(), info.end());
        if (item.is_regular_file()) content += ReadBytes(item.path());
    }
    return items;
}

struct Row {
    std::string name;
    std::vector<std::string> arguments;
    std::function<void(const std::filesystem::path& volume)> prepare;
};

/// A directory at the path of the status file. The library throws because it cannot read the file, and the
/// plug-in catches the exception.
Row statusIsAFolder() {
    return {"StatusIsADirectory", {"--product", "3100"}, [](const std::filesystem::path& volume) {
                std::filesystem::remove(volume / kStatusFile);
                std::filesystem::create_directory(volume / kStatusFile);
            }};
}

std::vector<Row> makeRows() {
    std::vector<Row> rows;
    for (const char* product : {"1400", "3100", "3500", "4900", "5000", "5100", "5200", "7"}) {
        rows.push_back({std::string("Product") + product, {"--product", product}, {}});
    }
    for (const char* language : {"0", "1", "2", "3", "6", "11", "2147483647"}) {
        rows.push_back(
            {std::string("Language") + language, {"--product", "4900", "--language", language}, {}});
    }
    const std::vector<std::pair<const char*, std::string>> states = {
        {"StatusDisabled", "UpdatesDisabled"},    {"StatusEmpty", ""},
        {"StatusShort", "UpdatesEnable"},         {"StatusLonger", "UpdatesEnabledX"},
        {"StatusOtherCase", "updatesenabled"},    {"StatusBytes", std::string("\xFF\0\xFE", 3)},
        {"StatusLong", std::string(100'000, 'U')}};
    for (const auto& [name, text] : states) {
        rows.push_back({name, {"--product", "3100"}, [text = text](const std::filesystem::path& volume) {
                            std::ofstream(volume / kStatusFile, std::ios::binary) << text;
                        }});
    }
    const auto remove = [](const char* item) {
        return [item](const std::filesystem::path& volume) { std::filesystem::remove_all(volume / item); };
    };
    rows.push_back({"StatusMissing", {"--product", "3100"}, remove(kStatusFile.c_str())});
    rows.push_back({"DirectoryMissing", {"--product", "3100"}, remove("Applications/Korvane")});
    rows.push_back({"IconMissing", {"--product", "3100"}, remove("Applications/Korvane/Icon\r")});
    rows.push_back(statusIsAFolder());
    rows.push_back({"WrongSelector", {"--product", "4900", "--selector", "7"}, {}});
    rows.push_back({"WrongSelectorDirectly", {"--product", "4900", "--selector", "7", "--direct"}, {}});
    rows.push_back({"OtherMessage", {"--product", "4900", "--message", "4"}, {}});
    return rows;
}

/// Returns the report of a run, its messages, and the contents of its volume, without the path of the volume.
json effectsOf(const Row& row, const std::vector<std::string>& which) {
    const TemporaryFolder folder;
    const std::filesystem::path volume = folder / "volume";
    RunHost({"volume", volume.string()});
    if (row.prepare) row.prepare(volume);
    std::vector<std::string> arguments{"run",           POSTINSTALL_BUNDLE, "--volume",
                                       volume.string(), "--json",           "--trace"};
    arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
    arguments.insert(arguments.end(), which.begin(), which.end());
    const HostTool tool = RunHost(arguments);
    json report = json::parse(tool.out, nullptr, false);
    if (report.is_object()) report.erase("volume");
    std::string left;
    for (const auto& [path, content] : contentsOf(volume)) left += path + '\0' + content + '\0';
    return {{"report", report}, {"messages", tool.err}, {"volume", json::binary({left.begin(), left.end()})}};
}

class BothExecutables : public testing::TestWithParam<Row> {};

TEST_P(BothExecutables, HaveTheSameEffects) {
    const json own = effectsOf(GetParam(), {});
    const json mac = effectsOf(GetParam(), {"--mac"});
    ASSERT_EQ(mac["report"]["end"]["kind"], "finished") << mac["messages"];
    EXPECT_EQ(mac, own);
}

INSTANTIATE_TEST_SUITE_P(Mac, BothExecutables, testing::ValuesIn(makeRows()),
                         [](const auto& row) { return row.param.name; });

TEST(MacExecutable, CatchesAnExceptionOfItsOwn) {
    const json run = effectsOf(statusIsAFolder(), {"--mac"});
    EXPECT_THAT(run["report"]["changes"]["preferences"].dump(),
                HasSubstr("Attempt to read 4096 bytes, only read 0 bytes"));
}

/// Runs a copy of the bundle with a changed Mac executable. The copy has the Linux executable only if
/// `hasOther` is true.
HostTool runChanged(const std::function<void(std::string& bytes)>& change, bool hasOther = true) {
    const std::filesystem::path whole = POSTINSTALL_BUNDLE;
    const TemporaryFolder folder;
    folder.Write("Changed.bundle/Contents/Info.plist", ReadBytes(whole / "Contents/Info.plist"));
    std::string bytes = ReadBytes(whole / "Contents/MacOS/PostInstall");
    change(bytes);
    folder.Write("Changed.bundle/Contents/MacOS/PostInstall", bytes);
    std::vector<std::string> arguments{"run", (folder / "Changed.bundle").string(), "--product", "4900"};
    if (hasOther) {
        std::filesystem::create_directory_symlink(whole / "Contents/Linux",
                                                  folder / "Changed.bundle/Contents/Linux");
        arguments.emplace_back("--mac");
    }
    return RunHost(arguments);
}

/// Replaces the bytes of the last occurrence.
void replace(std::string& bytes, const std::string& from, const std::string& to) {
    const std::size_t place = bytes.rfind(from);
    ASSERT_NE(place, std::string::npos);
    bytes.replace(place, to.size(), to);
}

/// Renames a symbol in both tables that contain its name.
void renameSymbol(std::string& bytes, const std::string& from, const std::string& to) {
    for (std::size_t place = 0; (place = bytes.find(from, place)) != std::string::npos; ++place) {
        bytes.replace(place, to.size(), to);
    }
}

TEST(MacExecutable, FollowsThePlugInContract) {
    const HostTool tool = RunHost({"validate", POSTINSTALL_BUNDLE, "--mac"});
    EXPECT_EQ(tool.ExitStatus(), 0) << tool.out << tool.err;
    EXPECT_THAT(tool.Verdict(), testing::StartsWith("PASS "));
}

TEST(MacExecutable, HasItsFailuresReported) {
    const TemporaryFolder folder;
    folder.Write("Throwing.bundle/Contents/Info.plist",
                 ReadBytes(std::string(POSTINSTALL_BUNDLE) + "/Contents/Info.plist"));
    folder.Write("Throwing.bundle/Contents/MacOS/PostInstall", ReadBytes(THROWING_CODE));
    const auto verdict = [&](const char* product) {
        return RunHost({"run", (folder / "Throwing.bundle").string(), "--product", product}).Verdict();
    };
    EXPECT_EQ(verdict("0"), "DONE 0 changes") << "an initialiser did not run";
    EXPECT_THAT(verdict("1"), HasSubstr("exception std::runtime_error escaped from XCodMain("));
    EXPECT_THAT(verdict("2"), HasSubstr("exception int escaped from XCodMain("));
    EXPECT_THAT(verdict("3"), HasSubstr("exception std::out_of_range escaped from XCodMain("));
    EXPECT_THAT(verdict("4"), HasSubstr("crashed in XCodMain("));
    const HostTool checked =
        RunHost({"validate", (folder / "Throwing.bundle").string(), "--mac", "--include", "steps"});
    EXPECT_THAT(checked.out, HasSubstr("Throwing.bundle --mac --include steps."));
}

TEST(MacExecutable, RunsIfThereIsNoLinuxExecutable) {
    EXPECT_EQ(runChanged([](std::string&) {}, false).Verdict(), "DONE 5 changes");
}

TEST(MacExecutable, IsRejectedWithTheReasonIfDamaged) {
    struct Refused {
        std::function<void(std::string& bytes)> change;
        std::string report;
    };
    const auto word = [](std::uint32_t value) {
        return std::string(reinterpret_cast<const char*>(&value), sizeof value);
    };
    const std::string tables = word(0x80000022) + word(48);
    const std::vector<Refused> rows = {
        {[](auto& bytes) { bytes[4] = 18; }, "not a Mach-O file for 32-bit Intel"},
        {[](auto& bytes) { bytes[12] = 2; }, "not a loadable bundle"},
        {[](auto& bytes) { bytes.resize(bytes.size() / 2); }, "the file is truncated or damaged"},
        {[](auto& bytes) { bytes.resize(100); }, "the file is truncated or damaged"},
        {[](auto& bytes) { renameSymbol(bytes, "_NewPtr", "_NewPtx"); }, "unsupported imports: _NewPtx"},
        {[&](auto& bytes) { replace(bytes, tables, word(0x22 | 0x10)); },
         "was linked for a system before 10.6"},
        {[&](auto& bytes) { replace(bytes, tables, word(0x80000099)); }, "unsupported load command"},
        {[](auto& bytes) { replace(bytes, std::string("\x51\x13\x40_", 4), "\x51\x1F\x40_"); },
         "names no library of the file"},
        {[](auto& bytes) { replace(bytes, std::string("\x51\x13\x40_", 4), "\x52"); },
         "unsupported operation in the table of binds: 82"},
        {[](auto& bytes) { replace(bytes, std::string("\x11\x21", 2), "\x11\x2F"); },
         "a fix-up refers to a missing segment"},
        {[](auto& bytes) { replace(bytes, std::string("zPLR\0", 5), "zQLR"); },
         "unsupported pointers in an unwind entry"},
        {[&](auto& bytes) { replace(bytes, word(28) + std::string("\0\0\0\0\1z", 6), word(0xFFFFFFFC)); },
         "the file is truncated or damaged"},
    };
    for (const Refused& row : rows) {
        SCOPED_TRACE(row.report);
        const HostTool run = runChanged(row.change);
        EXPECT_EQ(run.ExitStatus(), 3) << run.out;
        EXPECT_THAT(run.err, HasSubstr("/Contents/MacOS/PostInstall"));
        EXPECT_THAT(run.err, HasSubstr(row.report));
    }
}

} // namespace
