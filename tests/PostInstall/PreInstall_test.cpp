#include "InstallerHost.h"

#include <gmock/gmock.h>
#include <utility>

namespace {

class PreInstallStep : public InstallerHost {};

TEST_F(PreInstallStep, NotesTheVersionUnderTheProductsShortName) {
    const std::pair<std::int32_t, const char*> rows[] = {{1400, "Tamblor"},   {3100, "Korvane Restora"},
                                                         {3500, "Meridian4"}, {5200, "Gildmark"},
                                                         {5100, "Larynth"},   {5000, "TCL"},
                                                         {4900, "Fusewright"}};
    Texts all;
    for (const auto& [code, name] : rows) {
        EXPECT_EQ(Deliver({2, code}), 0U);
        all.push_back("InstalledProducts/" + std::string(name) + "/CurrentVersion = \"1.73\"");
        EXPECT_THAT(Preferences("com.korvane.updater"), testing::UnorderedElementsAreArray(all));
    }
}

TEST_F(PreInstallStep, SetsOneValueThenSynchronizes) {
    const Texts expected = {
        "set \"com.korvane.updater\" \"InstalledProducts/Fusewright/CurrentVersion\" = \"1.73\", "
        "kCFPreferencesAnyUser, kCFPreferencesCurrentHost",
        "synchronize \"com.korvane.updater\", kCFPreferencesAnyUser, kCFPreferencesCurrentHost",
    };
    EXPECT_EQ(Deliver({2, 4900}), 0U);
    EXPECT_EQ(effects, expected);
    // Called by its own name, the step does not look at the message.
    const auto step = reinterpret_cast<Step>(Exported("PreInstall"));
    effects.clear();
    calls.clear();
    EXPECT_EQ(Deliver({77, 4900}, step), 0U);
    EXPECT_EQ(effects, expected);
    EXPECT_EQ(calls, (Texts{"CFStringCreateWithCString", "CFPreferencesSetValue", "CFRelease",
                            "CFPreferencesSynchronize"}));
}

TEST_F(PreInstallStep, UnknownProductIsNoError) {
    for (const std::int32_t code : {0, 1234, -4900, 4900 + 0x10000, 0x7FFFFFFF}) {
        EXPECT_EQ(Deliver({2, code}), 0U) << code;
    }
    EXPECT_EQ(effects, Texts{});
}

TEST_F(PreInstallStep, UnwritablePreferencesAreNotReported) {
    volume.Write("Library/Preferences/com.korvane.updater.plist", "no property list");
    EXPECT_EQ(Deliver({2}), 0U);
    EXPECT_EQ(ReadBytes(OnVolume("/Library/Preferences/com.korvane.updater.plist")), "no property list");

    volume.Write("Library/Preferences/com.korvane.updater.plist",
                 "<plist version=\"1.0\"><dict/></plist>"); // for the value that waits
    EXPECT_EQ(Deliver({2}), 0U);
    EXPECT_EQ(Preferences("com.korvane.updater"),
              Texts{"InstalledProducts/Fusewright/CurrentVersion = \"1.73\""});
}

TEST_F(PreInstallStep, OtherKeysOfTheUpdaterStay) {
    volume.Write("Library/Preferences/com.korvane.updater.plist",
                 "<plist version=\"1.0\"><dict><key>Other</key><array><true/></array></dict></plist>");
    EXPECT_EQ(Deliver({2}), 0U);
    EXPECT_THAT(Preferences("com.korvane.updater"), testing::Contains(testing::StartsWith("Other = ")));
    EXPECT_THAT(ReadBytes(OnVolume("/Library/Preferences/com.korvane.updater.plist")),
                testing::StartsWith("<?xml"));
}

class RefusedCall : public InstallerHost, public testing::WithParamInterface<const char*> {};

TEST_P(RefusedCall, OfAStepIsToldToUserAndHost) {
    const auto step = reinterpret_cast<Step>(Exported(GetParam()));
    for (const int selector : {0, 7, 999, 1001, -1000}) {
        effects.clear();
        EXPECT_EQ(Deliver({3, 4900, 11, selector, 0x10}, step), 0x11U) << selector;
        EXPECT_EQ(effects, (Texts{"alert Unable to set post install option keys.", "stop 5000"})) << selector;
    }
}

TEST_P(RefusedCall, WithoutABlockDoesNothing) {
    reinterpret_cast<Step>(Exported(GetParam()))(nullptr);
    EXPECT_EQ(calls, Texts{});
}

INSTANTIATE_TEST_SUITE_P(Steps, RefusedCall, testing::Values("PreInstall", "PostInstall"),
                         [](const auto& step) { return step.param; });

} // namespace
