// Executables read without loading them, good and broken, and what `info` makes of them.

#include "ElfFile.h"
#include "HostTool.h"
#include "MachOFile.h"
#include "TestBundle.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using namespace xcodhost;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

const char* const kOwnArchitecture = sizeof(void*) == 8 ? "x86_64" : "i386";

TEST(ElfFile, ListsWhatTheFileExports) {
    const ElfFile file = ReadElf(ReadBytes(TEST_PLUGIN));
    EXPECT_EQ(file.problem, "");
    EXPECT_EQ(file.architecture, kOwnArchitecture);
    for (const char* name : {"Make", "MakeCrash", "MakeNothing", "MakeRefusing", "PreInstall"}) {
        EXPECT_THAT(file.exports, testing::Contains(name));
    }
    EXPECT_THAT(file.exports, testing::Not(testing::Contains("CFStringCreateWithCString"))) << "an import";
}

TEST(ElfFile, OutlivesEveryTruncation) {
    const std::string bytes = ReadBytes(TEST_PLUGIN);
    const std::vector<std::string> exports = ReadElf(bytes).exports;
    for (std::size_t size = 4; size < bytes.size(); size += size < 1024 ? 1 : 997) {
        const std::string start =
            bytes.substr(0, size); // its own allocation, so that a sanitizer sees its end
        const ElfFile file = ReadElf(start);
        EXPECT_EQ(file.exports, file.problem.empty() ? exports : std::vector<std::string>()) << size;
    }
}

TEST(ElfFile, OutlivesEveryByteOfTheHeaderSetHigh) {
    const std::string bytes = ReadBytes(TEST_PLUGIN);
    for (std::size_t place = 4; place < 64; ++place) {
        std::string broken = bytes;
        broken[place] = '\xFF';
        ReadElf(broken);
    }
}

std::string Bytes(std::initializer_list<int> values) { return {values.begin(), values.end()}; }

TEST(MachOFile, NamesArchitectures) {
    EXPECT_THAT(ReadMachO(Bytes({0xCE, 0xFA, 0xED, 0xFE, 7, 0, 0, 0})).architectures, ElementsAre("i386"));
    EXPECT_THAT(ReadMachO(Bytes({0xFE, 0xED, 0xFA, 0xCE, 0, 0, 0, 18})).architectures, ElementsAre("ppc"));
    std::string universal = Bytes({0xCA, 0xFE, 0xBA, 0xBE, 0, 0, 0, 2});
    universal += Bytes({0, 0, 0, 7}) + std::string(16, '\0') + Bytes({1, 0, 0, 7}) + std::string(16, '\0');
    EXPECT_THAT(ReadMachO(universal).architectures, ElementsAre("i386", "x86_64"));
    universal.pop_back();
    EXPECT_NE(ReadMachO(universal).problem, "");
    EXPECT_FALSE(IsMachO(Bytes({0xCA, 0xFE, 0xBA, 0xBE, 0, 0, 0, 52}))) << "a Java class";
    EXPECT_FALSE(IsMachO("\xCE\xFA\xED"));
}

TEST(Info, TellsWhatABundleIs) {
    const TestBundle bundle;
    const auto info = nlohmann::json::parse(RunHost({"info", bundle.Path(), "--json"}).out);
    EXPECT_EQ(info["factories"][0]["function"], "Make");
    EXPECT_EQ(info["types"][0]["identifier"], "5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8");
    EXPECT_EQ(info["executables"][0]["format"], "ELF");
    EXPECT_EQ(info["executables"][0]["architectures"][0], kOwnArchitecture);
    const HostTool text = RunHost({"info", bundle.Path()});
    EXPECT_THAT(text.out, HasSubstr("type  5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8 (installer plug-in): A0A0"));
}

TEST(Info, NamesTheExecutableAfterTheBundleWhenTheListDoesNot) {
    const std::string named = "<key>CFBundleExecutable</key><string>Test</string>";
    std::string list = InfoList("Make");
    list.erase(list.find(named), named.size());
    const TestBundle bundle(list);
    const HostTool info = RunHost({"info", bundle.Path() + '/'});
    EXPECT_THAT(info.out, HasSubstr("/Contents/Linux/Test: ELF ")) << info.err;
}

TEST(Info, RefusesBrokenBundlesWithTheReason) {
    struct Row {
        std::string infoList, code, told;
    };
    for (const Row& row :
         std::vector<Row>{{"", "plug-in", "Info.plist: missing"},
                          {"<plist><dict>", "plug-in", "Info.plist: "},
                          {"<plist version=\"1.0\"><dict/></plist>", "plug-in", "CFPlugInFactories"},
                          {InfoList("Make"), "", "no executable \"Test\""},
                          {InfoList("Make"), "text", "neither an ELF nor a Mach-O"}}) {
        SCOPED_TRACE(row.told);
        const TestBundle bundle(row.infoList, row.code);
        const HostTool info = RunHost({"info", bundle.Path()});
        EXPECT_EQ(info.ExitStatus(), 3);
        EXPECT_EQ(info.out, "");
        EXPECT_THAT(info.err, HasSubstr(row.told));
    }
}

} // namespace
