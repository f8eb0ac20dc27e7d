// Tests of the messages and exit statuses for bundles that cannot be loaded.

#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

// The columns of the table below.
struct Plist {
    std::string text; ///< Empty: the bundle has no property list.
};
struct Code {
    std::string bytes = "plug-in"; ///< As for `TestBundle`.
};
struct Run {
    std::string reason;  ///< In the verdict of `run`.
    std::string message; ///< A part of the line on standard error.
};
struct Validate {
    std::string firstFailure; ///< The id of a check. Empty: `validate` is not run.
};
struct Info {
    std::string message; ///< A part of the line on standard error. Empty: `info` succeeds.
};

/// A bundle and the expected results of three commands.
struct Unloadable {
    const char* name;
    Plist plist;
    Code code;
    Run run;
    Validate validate = {};
    Info info = {};
};

/// Returns a 64-bit executable for RISC-V, on which these tests do not run.
std::string foreignExecutable() {
    std::string elf = "\177ELF\x02\x01\x01" + std::string(57, '\0');
    elf[16] = 3;
    elf[18] = static_cast<char>(0xF3);
    elf[20] = 1;
    elf[52] = 64;
    return elf;
}

class AnUnloadableBundle : public testing::TestWithParam<Unloadable> {};

TEST_P(AnUnloadableBundle, IsRejectedWithTheReason) {
    const TestBundle bundle(GetParam().plist.text, GetParam().code.bytes);
    const HostTool run = RunHost({"run", bundle.Path(), "--product", "0"});
    EXPECT_EQ(run.ExitStatus(), 3);
    EXPECT_EQ(run.out, "FAIL not loaded (" + GetParam().run.reason + ")\n");
    EXPECT_THAT(run.err, HasSubstr(bundle.Path()));
    EXPECT_THAT(run.err, HasSubstr(GetParam().run.message));
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;

    if (!GetParam().validate.firstFailure.empty()) {
        const HostTool validation = RunHost({"validate", bundle.Path()});
        EXPECT_THAT(validation.Verdict(), HasSubstr("(first: " + GetParam().validate.firstFailure + ")"));
        EXPECT_EQ(validation.ExitStatus(), 3);
    }

    const HostTool info = RunHost({"info", bundle.Path()});
    EXPECT_EQ(info.ExitStatus(), GetParam().info.message.empty() ? 0 : 3) << info.err;
    EXPECT_EQ(info.out.empty(), !GetParam().info.message.empty());
    EXPECT_THAT(info.err, HasSubstr(GetParam().info.message));
}

INSTANTIATE_TEST_SUITE_P(
    Host, AnUnloadableBundle,
    testing::ValuesIn(std::vector<Unloadable>{
        {"NoList", Plist{""}, Code{}, Run{"no-bundle", "Test.bundle"}, Validate{"bundle.property-list"},
         Info{"Info.plist: missing"}},
        {"BrokenList", Plist{"<plist><dict>"}, Code{}, Run{"broken-property-list", "Info.plist"},
         Validate{"bundle.property-list"}, Info{"Info.plist: "}},
        {"NoDictionary", Plist{"<plist><string>x</string></plist>"}, Code{},
         Run{"broken-property-list", "Info.plist"}, Validate{"bundle.property-list"},
         Info{"its root is not a dictionary"}},
        {"NoFactories", Plist{"<plist version=\"1.0\"><dict/></plist>"}, Code{},
         Run{"missing-key", "Test.bundle"}, Validate{"bundle.property-list"}, Info{"CFPlugInFactories"}},
        {"OtherType", Plist{InfoPlist("Make", "A0A0A0A0-0000-4000-8000-00000000000F")}, Code{},
         Run{"missing-key", kPluginType}, Validate{"bundle.factory"}},
        {"NameLeavesTheBundle", Plist{InfoPlist("MyFactory", kPluginType, "../../y")}, Code{},
         Run{"missing-key", "CFBundleExecutable"}, Validate{"bundle.executable"},
         Info{"CFBundleExecutable is not a file name"}},
        {"NoExecutable", Plist{InfoPlist("MyFactory")}, Code{""}, Run{"no-executable", "Linux/Test"},
         Validate{"bundle.executable"}, Info{"no executable \"Test\""}},
        {"TextForCode", Plist{InfoPlist("MyFactory")}, Code{"#!/bin/sh\n"},
         Run{"wrong-architecture", "Linux/Test"}, Validate{"bundle.executable"},
         Info{"neither an ELF nor a Mach-O"}},
        {"OtherProcessor", Plist{InfoPlist("MyFactory")}, Code{foreignExecutable()},
         Run{"wrong-architecture", "Linux/Test"}, Validate{"bundle.architecture"}},
        {"MacCode", Plist{InfoPlist("MyFactory")}, Code{"\xCE\xFA\xED\xFE" + std::string(60, '\0')},
         Run{"wrong-architecture", "Linux/Test"}, Validate{"bundle.architecture"}},
        {"NoSuchFunction", Plist{InfoPlist("Absent")}, Code{}, Run{"symbol-missing", "Absent"}},
        {"NullFromFactory", Plist{InfoPlist("MakeNothing")}, Code{}, Run{"factory-refused", "returned null"}},
        {"NoInterface", Plist{InfoPlist("MakeRefusing")}, Code{}, Run{"interface-refused", "(0x80000004)"}},
    }),
    [](const auto& row) { return row.param.name; });

} // namespace
