#include <CoreFoundation/CoreFoundation.h>

#include <macplatform/Bundles.h>
#include <macplatform/LiveObjects.h>
#include <macplatform/StartupVolume.h>

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

using macplatform::BundleFault;
using macplatform::LastBundleFailure;

namespace {

const char typeText[] = "11111111-2222-3333-4444-555555555555";
const char factoryText[] = "AAAAAAAA-2222-3333-4444-555555555555";
constexpr CFUUIDBytes typeBytes = {0x11, 0x11, 0x11, 0x11, 0x22, 0x22, 0x33, 0x33,
                                   0x44, 0x44, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55};

constexpr CFUUIDBytes factoryBytes = {0xAA, 0xAA, 0xAA, 0xAA, 0x22, 0x22, 0x33, 0x33,
                                      0x44, 0x44, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55};

std::string InfoList(const std::string& function, const std::string& executable = "Sample") {
    return std::string("<plist version=\"1.0\"><dict><key>CFBundleExecutable</key><string>") + executable +
           "</string><key>CFPlugInFactories</key><dict><key>" + factoryText + "</key><string>" + function +
           "</string></dict><key>CFPlugInTypes</key><dict><key>" + typeText + "</key><array><string>" +
           factoryText + "</string></array></dict></dict></plist>";
}

CFPlugInRef Create(const std::filesystem::path& bundle) {
    const CFStringRef path = CFStringCreateWithCString(nullptr, bundle.c_str(), kCFStringEncodingUTF8);
    const CFURLRef url = CFURLCreateWithFileSystemPath(nullptr, path, kCFURLPOSIXPathStyle, true);
    const CFPlugInRef plugIn = CFPlugInCreate(nullptr, url);
    CFRelease(url);
    CFRelease(path);
    return plugIn;
}

/// Makes an instance as an installer does; null where any step fails.
void* MakeInstance(CFPlugInRef plugIn) {
    const CFUUIDRef type = CFUUIDCreateFromUUIDBytes(nullptr, typeBytes);
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
        std::filesystem::copy(SAMPLE_BUNDLE_CODE, bundle / "Contents/Linux/Sample");
    }
    void TearDown() override { EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore); }
};

} // namespace

TEST_F(PlugIn, GivesAnInstance) {
    WriteInfo(InfoList("MakeSample"));
    CopyCode();
    const CFPlugInRef plugIn = Create(bundle);
    ASSERT_TRUE(plugIn);
    EXPECT_TRUE(MakeInstance(plugIn)) << LastBundleFailure().text;
    EXPECT_TRUE(macplatform::BundleSymbol(plugIn, "RefuseSample"));
    const CFPlugInRef again = Create(bundle);
    EXPECT_EQ(again, plugIn);
    EXPECT_EQ(CFGetRetainCount(plugIn), 2);
    CFRelease(again);
    CFRelease(plugIn);
}

TEST_F(PlugIn, LivesAsLongAsItsInstances) {
    WriteInfo(InfoList("MakeSample"));
    const CFPlugInRef plugIn = Create(bundle);
    const CFUUIDRef factory = CFUUIDCreateFromUUIDBytes(nullptr, factoryBytes);
    CFPlugInRemoveInstanceForFactory(factory);
    EXPECT_EQ(CFGetRetainCount(plugIn), 1) << "there was no instance";
    CFPlugInAddInstanceForFactory(factory);
    CFRelease(plugIn);
    EXPECT_EQ(CFGetRetainCount(plugIn), 1);
    CFPlugInRemoveInstanceForFactory(factory);
    CFPlugInRemoveInstanceForFactory(factory);
    CFPlugInAddInstanceForFactory(factory);
    EXPECT_EQ(macplatform::LiveObjectCount(), liveBefore + 1) << "the UUID alone";
    CFRelease(factory);
}

TEST_F(PlugIn, FindsFactoriesOfATypeThatAnyPlugInHas) {
    WriteInfo(InfoList("MakeSample"));
    folder.Write("Other.bundle/Contents/Info.plist", "<plist><dict/></plist>");
    const CFPlugInRef empty = Create(folder / "Other.bundle");
    const CFUUIDRef type = CFUUIDCreateFromUUIDBytes(nullptr, typeBytes);
    EXPECT_EQ(CFPlugInFindFactoriesForPlugInTypeInPlugIn(type, empty), nullptr);
    const CFPlugInRef plugIn = Create(bundle);
    const CFArrayRef none = CFPlugInFindFactoriesForPlugInTypeInPlugIn(type, empty);
    ASSERT_TRUE(none);
    EXPECT_EQ(CFArrayGetCount(none), 0);
    const CFArrayRef one = CFPlugInFindFactoriesForPlugInTypeInPlugIn(type, plugIn);
    ASSERT_EQ(CFArrayGetCount(one), 1);
    const CFUUIDRef factory = CFUUIDCreateFromUUIDBytes(nullptr, factoryBytes);
    EXPECT_TRUE(CFEqual(CFArrayGetValueAtIndex(one, 0), factory));
    for (const CFTypeRef object : {CFTypeRef(empty), CFTypeRef(type), CFTypeRef(plugIn), CFTypeRef(none),
                                   CFTypeRef(one), CFTypeRef(factory)}) {
        CFRelease(object);
    }
}

TEST_F(PlugIn, IsFoundOnTheStartupVolume) {
    folder.Write("Library/Sample.bundle/Contents/Info.plist", InfoList("MakeSample"));
    macplatform::SetStartupVolume(folder.Path().string());
    const CFPlugInRef plugIn = Create("/Library/Sample.bundle");
    macplatform::SetStartupVolume("");
    ASSERT_TRUE(plugIn) << LastBundleFailure().text;
    CFRelease(plugIn);
}

TEST_F(PlugIn, SaysWhyThereIsNone) {
    struct Row {
        const char* name;
        std::string list;
        bool code;
        BundleFault fault;
    };
    const Row rows[] = {
        {"factory answers null", InfoList("RefuseSample"), true, BundleFault::FactoryRefused},
        {"no such function", InfoList("Missing"), true, BundleFault::SymbolMissing},
        {"no code", InfoList("MakeSample"), false, BundleFault::NoExecutable},
        {"name that leaves the bundle", InfoList("MakeSample", "../../x"), true, BundleFault::MissingKey},
        {"broken list", "rubbish", true, BundleFault::BrokenList},
        {"no dictionary", "<plist><string>x</string></plist>", true, BundleFault::BrokenList},
        {"no tables", "<plist><dict/></plist>", true, BundleFault::MissingKey},
    };
    for (const Row& row : rows) {
        std::filesystem::remove_all(bundle);
        WriteInfo(row.list);
        if (row.code) CopyCode();
        const CFPlugInRef plugIn = Create(bundle);
        EXPECT_FALSE(plugIn && MakeInstance(plugIn)) << row.name;
        EXPECT_EQ(LastBundleFailure().fault, row.fault) << row.name << ": " << LastBundleFailure().text;
        EXPECT_EQ(LastBundleFailure().text.find('\n'), std::string::npos);
        if (plugIn) CFRelease(plugIn);
    }
    EXPECT_FALSE(Create(folder / "missing"));
    EXPECT_EQ(LastBundleFailure().fault, BundleFault::NoBundle);
}

TEST_F(PlugIn, RefusesCodeForOthers) {
    std::string elf = ReadBytes(SAMPLE_BUNDLE_CODE);
    elf[18] = 8; // MIPS
    const std::string files[] = {"#!/bin/sh\n", "",
                                 std::string("\xCE\xFA\xED\xFE", 4) + std::string(60, '\0'), elf};
    for (const std::string& code : files) {
        std::filesystem::remove_all(bundle);
        WriteInfo(InfoList("MakeSample"));
        folder.Write("Sample.bundle/Contents/Linux/Sample", code);
        const CFPlugInRef plugIn = Create(bundle);
        ASSERT_TRUE(plugIn);
        EXPECT_FALSE(MakeInstance(plugIn));
        EXPECT_EQ(LastBundleFailure().fault, BundleFault::WrongArchitecture) << LastBundleFailure().text;
        CFRelease(plugIn);
    }
}
