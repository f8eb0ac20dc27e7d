#include "InstallerHost.h"

#include <gmock/gmock.h>

namespace {

class PreInstallStep : public InstallerHost {};

TEST_F(PreInstallStep, SetsOneValueThenSynchronizes) {
    const Texts expected = {
        "set \"com.korvane.updater\" \"InstalledProducts/Fusewright/CurrentVersion\" = \"1.73\", "
        "kCFPreferencesAnyUser, kCFPreferencesCurrentHost",
        "synchronize \"com.korvane.updater\", kCFPreferencesAnyUser, kCFPreferencesCurrentHost",
    };
    EXPECT_EQ(Deliver({2, 4900}), 0U);
    EXPECT_EQ(effects, expected);
    // The exported step ignores the message.
    const auto step = reinterpret_cast<Step>(Exported("PreInstall"));
    effects.clear();
    calls.clear();
    EXPECT_EQ(Deliver({77, 4900}, step), 0U);
    EXPECT_EQ(effects, expected);
    EXPECT_EQ(calls, (Texts{"CFStringCreateWithCString", "CFPreferencesSetValue", "CFRelease",
                            "CFPreferencesSynchronize"}));
}

TEST_F(PreInstallStep, UnwritablePreferencesAreNotReported) {
    volume.Write("Library/Preferences/com.korvane.updater.plist", "no property list");
    EXPECT_EQ(Deliver({2}), 0U);
    EXPECT_EQ(ReadBytes(OnVolume("/Library/Preferences/com.korvane.updater.plist")), "no property list");

    volume.Write("Library/Preferences/com.korvane.updater.plist",
                 "<plist version=\"1.0\"><dict/></plist>"); // the pending value can now be stored
    EXPECT_EQ(Deliver({2}), 0U);
    EXPECT_EQ(Preferences("com.korvane.updater"),
              Texts{"InstalledProducts/Fusewright/CurrentVersion = \"1.73\""});
}

} // namespace
