// End-to-end tests of the plug-in. Tools of other projects read the effects.

#include "support/CommandOutput.h"
#include "support/HostTool.h"

#include <gmock/gmock.h>

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

} // namespace
