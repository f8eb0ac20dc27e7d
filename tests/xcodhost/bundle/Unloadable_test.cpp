// What each command tells of bundles that cannot be loaded.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

struct Unloadable {
    const char* name;
    std::string infoPlist;
    std::string code;
    std::string reason; ///< Of the run that is refused,
    std::string report; ///< and in its line on standard error.
    std::string check;  ///< The first that fails; empty where a plug-in of another factory is tried.
    std::string info;   ///< Told by `info`; empty where that is content.
};

/// A 64-bit executable of a processor that runs none of these tests.
std::string foreignExecutable() {
    std::string elf = "\177ELF\x02\x01\x01" + std::string(57, '\0');
    elf[16] = 3;
    elf[18] = static_cast<char>(0xF3);
    elf[20] = 1;
    elf[52] = 64;
    return elf;
}

class AnUnloadableBundle : public testing::TestWithParam<Unloadable> {};

TEST_P(AnUnloadableBundle, IsRefusedWithItsReason) {
    const TestBundle bundle(GetParam().infoPlist, GetParam().code);
    const HostTool run = RunHost({"run", bundle.Path(), "--product", "0"});
    EXPECT_EQ(run.ExitStatus(), 3);
    EXPECT_EQ(run.out, "FAIL not loaded (" + GetParam().reason + ")\n");
    EXPECT_THAT(run.err, HasSubstr(bundle.Path()));
    EXPECT_THAT(run.err, HasSubstr(GetParam().report));
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;

    if (!GetParam().check.empty()) {
        const HostTool validation = RunHost({"validate", bundle.Path()});
        EXPECT_THAT(validation.Verdict(), HasSubstr("(first: " + GetParam().check + ")"));
        EXPECT_EQ(validation.ExitStatus(), 3);
    }

    const HostTool info = RunHost({"info", bundle.Path()});
    EXPECT_EQ(info.ExitStatus(), GetParam().info.empty() ? 0 : 3) << info.err;
    EXPECT_EQ(info.out.empty(), !GetParam().info.empty());
    EXPECT_THAT(info.err, HasSubstr(GetParam().info));
}

INSTANTIATE_TEST_SUITE_P(
    Host, AnUnloadableBundle,
    testing::ValuesIn(std::vector<Unloadable>{
        {"NoList", "", "plug-in", "no-bundle", "Test.bundle", "bundle.property-list", "Info.plist: missing"},
        {"BrokenList", "<plist><dict>", "plug-in", "broken-property-list", "Info.plist",
         "bundle.property-list", "Info.plist: "},
        {"NoDictionary", "<plist><string>x</string></plist>", "plug-in", "broken-property-list", "Info.plist",
         "bundle.property-list", "its root is not a dictionary"},
        {"NoFactories", "<plist version=\"1.0\"><dict/></plist>", "plug-in", "missing-key", "Test.bundle",
         "bundle.property-list", "CFPlugInFactories"},
        {"OtherType", InfoPlist("Make", "A0A0A0A0-0000-4000-8000-00000000000F"), "plug-in", "missing-key",
         kPluginType, "bundle.factory", ""},
        {"NameLeavesTheBundle", InfoPlist("MyFactory", kPluginType, "../../x"), "plug-in", "missing-key",
         "CFBundleExecutable", "bundle.executable", "CFBundleExecutable is not a file's name"},
        {"NoExecutable", InfoPlist("MyFactory"), "", "no-executable", "Linux/Test", "bundle.executable",
         "no executable \"Test\""},
        {"TextForCode", InfoPlist("MyFactory"), "#!/bin/sh\n", "wrong-architecture", "Linux/Test",
         "bundle.executable", "neither an ELF nor a Mach-O"},
        {"OtherProcessor", InfoPlist("MyFactory"), foreignExecutable(), "wrong-architecture", "Linux/Test",
         "bundle.architecture", ""},
        {"MacCode", InfoPlist("MyFactory"), "\xCE\xFA\xED\xFE" + std::string(60, '\0'), "wrong-architecture",
         "Linux/Test", "bundle.architecture", ""},
        {"NoSuchFunction", InfoPlist("Absent"), "plug-in", "symbol-missing", "Absent", "", ""},
        {"NullFromFactory", InfoPlist("MakeNothing"), "plug-in", "factory-refused", "answered null", "", ""},
        {"NoInterface", InfoPlist("MakeRefusing"), "plug-in", "interface-refused", "(0x80000004)", "", ""},
    }),
    [](const auto& row) { return row.param.name; });

} // namespace
