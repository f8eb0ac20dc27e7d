// End-to-end tests of the plug-in. Tools of other projects read the effects.

#include "support/CommandOutput.h"
#include "support/HostTool.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class InstalledProduct : public testing::Test {
protected:
    InstalledProduct() { RunHost({"volume", volume, "--status", "UpdatesEnabled"}); }

    HostTool Install(std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments{"run", POSTINSTALL_BUNDLE, "--product", "4900", "--language",
                                           "11",  "--volume",         volume};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunHost(arguments);
    }
    std::string Preferences(const std::string& domain) const {
        return volume + "/Library/Preferences/" + domain + ".plist";
    }

    TemporaryFolder folder;
    std::string volume = (folder / "vol").string();
};

TEST_F(InstalledProduct, HasFilesThatOtherToolsRead) {
    Install();
    const std::string read = "/usr/bin/python3 -c 'import plistlib, sys\n"
                             "print(plistlib.load(open(sys.argv[1], \"rb\")))' ";
    EXPECT_EQ(Printed(read + Preferences("com.korvane.updater")),
              "{'InstalledProducts/Fusewright/CurrentVersion': '1.73', 'UpdateInterval': 2}\n");
    EXPECT_THAT(Printed("plistutil -i " + Preferences("com.korvane.audioplugins.Fusewright") + " -f xml"),
                HasSubstr("<key>Lang</key>\n\t<string>ja</string>"));
    const std::string flags = "getfattr --absolute-names --only-values -n user.com.apple.FinderInfo ";
    EXPECT_EQ(Printed(flags + "'" + volume + "/Applications/Korvane'").substr(8, 2),
              std::string("\x04\x00", 2));
    EXPECT_EQ(Printed(flags + "'" + volume + "/Applications/Korvane/Icon\r'").substr(8, 2),
              std::string("\x40\x00", 2));
}

TEST_F(InstalledProduct, ReportsAWrongSelectorWithTwoAlertsAndTheErrorBit) {
    const HostTool run = Install({"--selector", "7", "--event", "pre", "--direct"});
    EXPECT_THAT(run.out, HasSubstr("  Alert \"Unable to set post install option keys.\" [OK]: OK\n"
                                   "  Stop alert 5000: not shown, its resource is not available\n"
                                   "  errorFlags 0x00000000 -> 0x00000001\n"));
    EXPECT_EQ(run.Verdict(), "FAIL error bit set by pre-install (0 changes)");
    EXPECT_EQ(run.ExitStatus(), 1);
}

TEST_F(InstalledProduct, ReportsABrokenPreferencesFileAndLeavesItUnchanged) {
    std::ofstream(Preferences("com.korvane.updater")) << "no list";
    const HostTool run = Install();
    EXPECT_THAT(run.out,
                HasSubstr("\ncom.korvane.updater: /Library/Preferences/com.korvane.updater.plist is not a "
                          "property list; the run left it unchanged and stored nothing\nDONE 3 changes\n"));
    EXPECT_EQ(ReadBytes(Preferences("com.korvane.updater")), "no list");
}

TEST_F(InstalledProduct, TracesThePlatformCallsInOrder) {
    const auto document = nlohmann::json::parse(Install({"--event", "pre", "--trace", "--json"}).out);
    std::vector<std::string> calls;
    for (const auto& call : document["calls"]) {
        if (call["event"].is_null()) continue;
        for (const auto& entry : call["platformCalls"]) {
            const std::string name = entry["call"];
            if (name.rfind("CFPreferences", 0) == 0) calls.push_back(name);
        }
    }
    EXPECT_THAT(calls, ElementsAre("CFPreferencesSetValue", "CFPreferencesSynchronize"));
    EXPECT_EQ(document["changes"]["preferences"][0]["after"]["value"], "1.73");
    EXPECT_EQ(document["objectsLeft"], nlohmann::json::array());
}

} // namespace
