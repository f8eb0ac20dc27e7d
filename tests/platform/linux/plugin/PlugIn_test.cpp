#include <CoreFoundation/CoreFoundation.h>

#include <macplatform/Bundles.h>
#include <macplatform/CFOwner.h>
#include <macplatform/LiveObjects.h>
#include <macplatform/StartupVolume.h>

#include "support/InfoPlist.h"
#include "support/NewText.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

using macplatform::LastBundleFailure;

namespace {

constexpr CFUUIDBytes kTypeBytes = {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2,
                                    0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8};
constexpr CFUUIDBytes kFactoryBytes = {0xA0, 0xA0, 0xA0, 0xA0, 0, 0, 0x40, 0, 0x80, 0, 0, 0, 0, 0, 0, 1};

CFPlugInRef create(const std::filesystem::path& bundle) {
    const CFURLRef url = NewURL(bundle);
    const CFPlugInRef plugIn = CFPlugInCreate(nullptr, url);
    CFRelease(url);
    return plugIn;
}

/// Creates an instance as the installer does. Returns null if a step fails.
void* makeInstance(CFPlugInRef plugIn) {
    const CFUUIDRef type = CFUUIDCreateFromUUIDBytes(nullptr, kTypeBytes);
    const CFArrayRef factories = CFPlugInFindFactoriesForPlugInTypeInPlugIn(type, plugIn);
    void* instance = nullptr;
    if (factories && CFArrayGetCount(factories) > 0) {
        const auto factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories, 0));
        instance = CFPlugInInstanceCreate(nullptr, factory, type);
    }
    if (factories) CFRelease(factories);
    CFRelease(type);
    return instance;
}

class PlugIn : public testing::Test {
protected:
    std::size_t liveBefore = macplatform::LiveObjectCount();
    TemporaryFolder folder;
    std::filesystem::path bundle = folder / "Sample.bundle";

    void WriteInfo(const std::string& list) { folder.Write("Sample.bundle/Contents/Info.plist", list); }
    void CopyCode() {
        std::filesystem::create_directories(bundle / "Contents/Linux");
        std::filesystem::copy(SAMPLE_BUNDLE_CODE, bundle / "Contents/Linux/Test");
    }
    void TearDown() override { EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore); }
};

} // namespace

TEST_F(PlugIn, ReturnsAnInstance) {
    WriteInfo(InfoPlist("MakeSample"));
    CopyCode();
    EXPECT_FALSE(create(folder / "Other.bundle"));
    const CFPlugInRef plugIn = create(bundle);
    ASSERT_TRUE(plugIn);
    EXPECT_EQ(LastBundleFailure().text, "");
    EXPECT_TRUE(makeInstance(plugIn)) << LastBundleFailure().text;
    EXPECT_FALSE(macplatform::BundleSymbol(plugIn, "Missing"));
    EXPECT_NE(LastBundleFailure().text, "");
    EXPECT_TRUE(macplatform::BundleSymbol(plugIn, "RefuseSample"));
    EXPECT_EQ(LastBundleFailure().text, "") << "a success clears the failure";
    const CFPlugInRef again = create(bundle);
    EXPECT_EQ(again, plugIn);
    EXPECT_EQ(CFGetRetainCount(plugIn), 2);
    CFRelease(again);
    CFRelease(plugIn);
}

TEST_F(PlugIn, ReportsCodeForAnotherProcessor) {
    WriteInfo(InfoPlist("MakeSample"));
    const CFPlugInRef plugIn = create(bundle);
    std::string code = ReadBytes(SAMPLE_BUNDLE_CODE);
    code.replace(18, 2, std::string("\xB7\0", 2));
    const auto failureOf = [&](const std::string& magic) {
        folder.Write("Sample.bundle/Contents/Linux/Test", magic + code.substr(4));
        EXPECT_EQ(makeInstance(plugIn), nullptr);
        return LastBundleFailure().text;
    };
    const std::string own = sizeof(void*) == 8 ? "x86-64" : "32-bit x86";
    EXPECT_EQ(failureOf(code.substr(0, 4)), (bundle / "Contents/Linux/Test").string() +
                                                ": built for 64-bit ARM, but this process runs code for " +
                                                own);
    EXPECT_NE(failureOf("text").find("not an executable file"), std::string::npos);
    for (const char* magic : {"\xFE\xED\xFA\xCE", "\xCE\xFA\xED\xFE", "\xFE\xED\xFA\xCF", "\xCF\xFA\xED\xFE",
                              "\xCA\xFE\xBA\xBE"}) {
        EXPECT_EQ(failureOf(magic).find("not an executable file"), std::string::npos) << "code for the Mac";
    }
    CFRelease(plugIn);
}

TEST_F(PlugIn, IsKeptAliveByItsInstances) {
    WriteInfo(InfoPlist("MakeSample"));
    const CFPlugInRef plugIn = create(bundle);
    const CFUUIDRef factory = CFUUIDCreateFromUUIDBytes(nullptr, kFactoryBytes);
    CFPlugInRemoveInstanceForFactory(factory);
    EXPECT_EQ(CFGetRetainCount(plugIn), 1) << "the plug-in had no instance";
    for (const auto change : {&CFPlugInAddInstanceForFactory, &CFPlugInRemoveInstanceForFactory,
                              &CFPlugInRemoveInstanceForFactory, &CFPlugInAddInstanceForFactory})
        change(factory);
    EXPECT_EQ(CFGetRetainCount(plugIn), 2);
    CFRelease(plugIn);
    EXPECT_EQ(CFGetRetainCount(plugIn), 1);
    CFPlugInRemoveInstanceForFactory(factory);
    CFPlugInRemoveInstanceForFactory(factory);
    CFPlugInAddInstanceForFactory(factory);
    EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore + 1) << "only the UUID remains";
    EXPECT_EQ(CFPlugInInstanceCreate(nullptr, factory, factory), nullptr);
    EXPECT_EQ(LastBundleFailure().text, "no bundle has the factory A0A0A0A0-0000-4000-8000-000000000001");
    CFRelease(factory);
}

TEST_F(PlugIn, FindsFactoriesOfATypeThatAnyPlugInHas) {
    WriteInfo(InfoPlist("MakeSample"));
    folder.Write("Other.bundle/Contents/Info.plist", "<plist><dict/></plist>");
    const CFPlugInRef empty = create(folder / "Other.bundle");
    const CFUUIDRef type = CFUUIDCreateFromUUIDBytes(nullptr, kTypeBytes);
    EXPECT_EQ(CFPlugInFindFactoriesForPlugInTypeInPlugIn(type, empty), nullptr);
    const CFPlugInRef plugIn = create(bundle);
    const CFArrayRef none = CFPlugInFindFactoriesForPlugInTypeInPlugIn(type, empty);
    ASSERT_TRUE(none);
    EXPECT_EQ(CFArrayGetCount(none), 0);
    const CFArrayRef one = CFPlugInFindFactoriesForPlugInTypeInPlugIn(type, plugIn);
    ASSERT_EQ(CFArrayGetCount(one), 1);
    EXPECT_TRUE(CFEqual(none, none));
    EXPECT_FALSE(CFEqual(one, none));
    EXPECT_DEATH(CFArrayGetValueAtIndex(one, 1), "index 1 is outside an array of 1 items");
    const CFUUIDRef factory = CFUUIDCreateFromUUIDBytes(nullptr, kFactoryBytes);
    EXPECT_TRUE(CFEqual(CFArrayGetValueAtIndex(one, 0), factory));
    for (const CFTypeRef object : {CFTypeRef(empty), CFTypeRef(type), CFTypeRef(plugIn), CFTypeRef(none),
                                   CFTypeRef(one), CFTypeRef(factory)}) {
        CFRelease(object);
    }
}

TEST_F(PlugIn, ReadsItsTablesAsTheMac) {
    std::string list = InfoPlist("7", std::string(" {") + kPluginType + "} ");
    list.replace(list.find("<string>7</string>"), 18,
                 "<integer>7</integer><key>no UUID</key><string>x</string>");
    list.insert(list.find("<dict>", list.find("CFPlugInTypes")) + 6,
                "<key>FFFFFFFF-0000-0000-0000-000000000000</key><array/>"); // before the type of the test
    WriteInfo(list);
    folder.Write("Short.bundle/Contents/Info.plist", InfoPlist("MakeSample", "5cd9484b-4a86"));
    std::string unregistered = InfoPlist("MakeSample", "ffffffff-4a86-4ca2-a79a-1525a3b5f6e8");
    unregistered.replace(unregistered.rfind(kPluginFactory), 8, "FFFFFFFF");
    folder.Write("Unregistered.bundle/Contents/Info.plist", unregistered);
    const CFPlugInRef plugIns[] = {create(bundle), create(folder / "Short.bundle"),
                                   create(folder / "Unregistered.bundle")};
    const CFUUIDBytes types[] = {
        kTypeBytes,
        {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
        {0xFF, 0xFF, 0xFF, 0xFF, 0x4A, 0x86, 0x4C, 0xA2, 0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8}};
    for (std::size_t i = 0; i < 3; ++i) {
        const macplatform::CFOwner<CFUUIDRef> type(CFUUIDCreateFromUUIDBytes(nullptr, types[i]));
        const macplatform::CFOwner<CFArrayRef> factories(
            CFPlugInFindFactoriesForPlugInTypeInPlugIn(type.get(), plugIns[i]));
        EXPECT_EQ(factories ? CFArrayGetCount(factories.get()) : -1, i < 2 ? 1 : -1) << i;
    }
    for (const CFPlugInRef plugIn : plugIns) CFRelease(plugIn);
}

TEST_F(PlugIn, IsFoundOnTheStartupVolume) {
    folder.Write("Library/Sample.bundle/Contents/Info.plist", InfoPlist("MakeSample"));
    macplatform::SetStartupVolume(folder.Path().string());
    const CFPlugInRef plugIn = create("/Library/Sample.bundle");
    macplatform::SetStartupVolume("");
    ASSERT_TRUE(plugIn) << LastBundleFailure().text;
    CFRelease(plugIn);
}
