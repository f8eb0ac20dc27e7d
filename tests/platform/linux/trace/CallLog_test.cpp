// Compares the recorded calls of all platform functions, the messages about their misuse, and the constants
// with a file.

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <mach-o/loader.h>
#include <mach/mach_time.h>
#include <macplatform/Alerts.h>
#include <sys/sysctl.h>

#include "support/CallRecorder.h"
#include "support/FinderItem.h"
#include "support/InChild.h"
#include "support/InfoPlist.h"
#include "support/NewText.h"
#include "support/SendMessage.h"
#include "support/VolumeTest.h"

#include <fstream>
#include <regex>

namespace {

class CallLog : public VolumeTest {
protected:
    /// Compares the lines with a file. Directories and changing numbers are replaced by words.
    void TearDown() override {
        for (const std::string& call : calls.lines) lines += call + '\n';
        lines = std::regex_replace(lines, std::regex(volume.Path().string()), "VOLUME");
        lines = std::regex_replace(lines, std::regex("(Time|time|MPProcessors)(GetCurrent)?\\(\\) = .*"),
                                   "$1$2() = NUMBER");
        const char* const test = testing::UnitTest::GetInstance()->current_test_info()->name();
        EXPECT_EQ(lines, ReadBytes(std::string(CALL_LOGS) + '/' + test + ".txt"));
    }
    void ExpectDeath(const std::function<void()>& misuse) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(InChild([&misuse] {
                      misuse();
                      return 0;
                  }),
                  1000 + SIGABRT);
        lines += testing::internal::GetCapturedStderr();
    }

    const CallRecorder calls;
    std::string lines; ///< Beside the calls.
};

TEST_F(CallLog, OfCoreFoundation) {
    const CFStringRef text = NewText("/a\nb");
    const UniChar units[] = {'u', 0xD800};
    for (const CFStringEncoding encoding : {CFStringEncoding{kCFStringEncodingMacRoman},
                                            CFStringEncoding{kCFStringEncodingASCII}, CFStringEncoding{77}})
        CFStringCreateWithCString(kCFAllocatorSystemDefault, "c", encoding);
    CFStringCreateWithCharacters(nullptr, units, 2);
    CFStringCreateWithPascalString(nullptr, reinterpret_cast<const unsigned char*>("\1p"), 0);
    CFStringGetLength(text);
    char buffer[8];
    CFStringGetCString(text, buffer, sizeof buffer, kCFStringEncodingUTF8);
    CFStringGetCString(CFSTR(""), buffer, 1, kCFStringEncodingASCII);
    CFStringCreateWithCharacters(nullptr, nullptr, 0);
    UniChar part[2];
    CFStringGetCharacters(text, CFRangeMake(1, 2), part);
    CFEqual(text, CFRetain(text));
    CFGetRetainCount(text);
    CFGetTypeID(text);
    CFGetTypeID(kCFAllocatorSystemDefault);
    CFStringGetTypeID();
    CFNumberGetTypeID();
    std::uint64_t value = 0;
    for (int type = 0; type <= kCFNumberCFIndexType + 1; ++type) {
        const CFNumberRef number = CFNumberCreate(nullptr, static_cast<CFNumberType>(type), &value);
        if (number) CFNumberGetValue(number, static_cast<CFNumberType>(type), &value);
    }
    const CFUUIDRef uuid = CFUUIDCreateFromUUIDBytes(nullptr, CFUUIDBytes{});
    CFUUIDGetUUIDBytes(uuid);
    CFUUIDGetConstantUUIDWithBytes(nullptr, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    for (const CFURLPathStyle style : {kCFURLPOSIXPathStyle, kCFURLHFSPathStyle, kCFURLWindowsPathStyle})
        CFURLCreateWithFileSystemPath(nullptr, text, style, style == kCFURLPOSIXPathStyle);
    FSRef ref;
    CFURLGetFSRef(NewURL("/missing"), &ref);
    CFPreferencesSetValue(text, CFNumberCreate(nullptr, kCFNumberIntType, &value), CFSTR("com.example"),
                          kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
    CFPreferencesSynchronize(CFSTR("com.example"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    CFRelease(text);
}

TEST_F(CallLog, OfPlugIns) {
    volume.Write("Library/P.bundle/Contents/Info.plist", InfoPlist("MakeSample"));
    volume.Write("Library/Q.bundle/Contents/Info.plist", "<dict/>");
    const CFUUIDRef type =
        CFUUIDGetConstantUUIDWithBytes(nullptr, 0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2, 0xA7, 0x9A,
                                       0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8);
    for (const char* const path : {"/Library/P.bundle", "/Library/Q.bundle", "/missing"}) {
        const CFPlugInRef plugIn = CFPlugInCreate(nullptr, NewURL(path));
        if (!plugIn) continue;
        const CFArrayRef factories = CFPlugInFindFactoriesForPlugInTypeInPlugIn(type, plugIn);
        if (CFArrayGetCount(factories) == 0) continue;
        const auto factory = static_cast<CFUUIDRef>(CFArrayGetValueAtIndex(factories, 0));
        CFPlugInInstanceCreate(nullptr, factory, type);
        CFPlugInInstanceCreate(nullptr, factory, factory);
        CFPlugInInstanceCreate(nullptr, type, type);
        CFPlugInAddInstanceForFactory(factory);
        CFPlugInRemoveInstanceForFactory(factory);
    }
}

TEST_F(CallLog, OfCarbonAndTheKernel) {
    volume.Write("Users/item");
    FSRef ref;
    FSCatalogInfo info = {};
    MakeRef("/Users/item", ref);
    for (const FSCatalogInfoBitmap bitmap : {0U, 2U, 0x800U, 0x802U, 4U}) {
        FSGetCatalogInfo(&ref, bitmap, &info, nullptr, nullptr, nullptr);
        FSSetCatalogInfo(&ref, bitmap, bitmap == 0 ? nullptr : &info);
    }
    FSExchangeObjects(&ref, nullptr);
    const OSType finder = 'MACS';
    AEDesc address, nowhere = {typeNull, nullptr}, specifier;
    AppleEvent event, reply;
    AECreateDesc(typeApplSignature, &finder, sizeof finder, &address);
    AECreateAppleEvent(kAECoreSuite, kAEMove, &address, kAutoGenerateReturnID, kAnyTransactionID, &event);
    CreateObjSpecifier(cObject, &nowhere, formPropertyID, &address, true, &specifier);
    for (AEDesc* const container : {&nowhere, static_cast<AEDesc*>(nullptr)})
        CreateObjSpecifier('\1z\x7Fx', container, formPropertyID, nullptr, false, &nowhere);
    AEPutParamDesc(&event, keyAEInsertHere, &specifier);
    AESend(&event, &reply, kAEWaitReply, kAENormalPriority, kAEDefaultTimeout, nullptr, nullptr);
    AEDisposeDesc(&event);
    DisposePtr(NewPtr(8));
    DisposePtr(nullptr);
    MemError();
    StopAlert(5000, nullptr);
    macplatform::SetAlertResponder([](const macplatform::Alert&) { return 0; });
    StopAlert(5001, nullptr);
    macplatform::SetAlertResponder({});
    const id alert = NewAlert();
    for (const char* const message : {"setMessageText:", "addButtonWithTitle:", "runModal", "unknown"})
        Send(alert, message, CFSTR("text"));
    Send(alert, "setMessageText:", nullptr);
    Send(objc_getClass("NSAlert"), "class");
    Send(objc_getClass("NSWindow"), "release");
    const ProcessSerialNumber thisProcess = {0, kCurrentProcess};
    ProcessInfoRec record = {};
    record.processInfoLength = sizeof record;
    GetProcessInformation(&thisProcess, &record);
    mach_timebase_info_data_t base;
    mach_timebase_info(&base);
    mach_absolute_time();
    CFAbsoluteTimeGetCurrent();
    MPProcessors();
    std::size_t count = 0;
    sysctlnametomib("hw.none", nullptr, &count);
    sysctl(nullptr, 0, nullptr, nullptr, nullptr, 0);
}

TEST_F(CallLog, OfMisuse) {
    const CFStringRef text = CFSTR("text");
    const auto number = reinterpret_cast<CFNumberRef>(text);
    const auto array = reinterpret_cast<CFArrayRef>(text);
    const auto uuid = reinterpret_cast<CFUUIDRef>(text);
    const auto plugIn = reinterpret_cast<CFPlugInRef>(text);
    FSRef ref = {};
    alignas(16) char strange[64] = {};
    const std::function<void()> misuses[] = {
        [] { CFRetain(nullptr); },
        [] { CFStringGetLength(reinterpret_cast<CFStringRef>(kCFAllocatorSystemDefault)); },
        [] { __CFStringMakeConstantString("\xC3\xA9"); },
        [] { CFStringCreateWithCString(nullptr, nullptr, 0); },
        [] { CFStringCreateWithCharacters(nullptr, nullptr, 1); },
        [] { CFStringCreateWithPascalString(nullptr, nullptr, 0); },
        [&] { CFStringGetCString(text, nullptr, 1, 0); },
        [&] { CFStringGetCharacters(text, CFRangeMake(3, 2), nullptr); },
        [&] { CFStringGetCharacters(text, CFRangeMake(0, -1), nullptr); },
        [&] { CFStringGetCharacters(text, CFRangeMake(-1, 0), nullptr); },
        [&] { CFStringGetCharacters(text, CFRangeMake(5, 0), nullptr); },
        [&] { CFNumberCreate(nullptr, kCFNumberIntType, nullptr); },
        [&] { CFNumberGetValue(number, kCFNumberIntType, nullptr); },
        [&] {
            CFNumberGetValue(CFNumberCreate(nullptr, kCFNumberSInt8Type, "\1"), kCFNumberSInt8Type, nullptr);
        },
        [&] { CFEqual(nullptr, text); },
        [&] { CFEqual(text, nullptr); },
        [&] { CFArrayGetCount(array); },
        [&] { CFArrayGetValueAtIndex(array, 0); },
        [&] { CFUUIDGetUUIDBytes(uuid); },
        [&] { CFURLCreateWithFileSystemPath(nullptr, nullptr, kCFURLPOSIXPathStyle, false); },
        [&] { CFURLGetFSRef(reinterpret_cast<CFURLRef>(text), &ref); },
        [&] { CFPlugInInstanceCreate(nullptr, uuid, uuid); },
        [&] { CFPlugInFindFactoriesForPlugInTypeInPlugIn(uuid, plugIn); },
        [&] { CFPlugInAddInstanceForFactory(uuid); },
        [&] { CFPlugInRemoveInstanceForFactory(uuid); },
        [&] {
            CFPreferencesSynchronize(reinterpret_cast<CFStringRef>(kCFAllocatorSystemDefault),
                                     kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
        },
        [&] { Send(reinterpret_cast<id>(&ref), "retain"); },
        [&] { DisposePtr(strange + 48); },
    };
    for (const auto& misuse : misuses) ExpectDeath(misuse);
}

TEST(Constants, HaveTheValuesOfTheMac) {
    // clang-format off
    const std::int64_t constants[] = {
        dskFulErr, ioErr, bdNamErr, tmfoErr, fnfErr, wPrErr, fBsyErr, dupFNErr, paramErr, permErr,
        memFullErr, memWZErr, procNotFound, diffVolErr, errFSBadFSRef, errFSBadInfoBitmap,
        errFSNotAFolder, errFSNameTooLong, errFSQuotaExceeded, errFSOperationNotSupported,
        errAECoercionFail, errAEDescNotFound, errAENotAEDesc, errAEEventNotHandled,
        errAENoSuchObject, kAutoGenerateReturnID, kAnyTransactionID, kAEWaitReply,
        kAENormalPriority, kAEDefaultTimeout, kFSNodeIsDirectoryMask, kIsOnDesk, kColor, kIsShared,
        kHasNoINITs, kHasBeenInited, kHasCustomIcon, kIsStationery, kNameLocked, kHasBundle,
        kIsInvisible, kIsAlias, kNoProcess, kSystemProcess, kCurrentProcess, kCFNumberCFIndexType,
        typeNull, typeType, typeFSRef, typeApplSignature, typeObjectSpecifier, typeProperty,
        formPropertyID, cObject, keyDirectObject, keyAEInsertHere, keyErrorNumber, kAECoreSuite,
        kAEMove, kFSCatInfoNone, kFSCatInfoNodeFlags, kFSCatInfoFinderInfo, kCFStringEncodingUTF8,
        SECTION_TYPE, S_MOD_INIT_FUNC_POINTERS, REBASE_OPCODE_MASK, REBASE_IMMEDIATE_MASK,
        REBASE_OPCODE_DONE, REBASE_OPCODE_SET_TYPE_IMM, REBASE_OPCODE_SET_SEGMENT_AND_OFFSET_ULEB,
        REBASE_OPCODE_ADD_ADDR_ULEB, REBASE_OPCODE_ADD_ADDR_IMM_SCALED,
        REBASE_OPCODE_DO_REBASE_IMM_TIMES, REBASE_OPCODE_DO_REBASE_ULEB_TIMES,
        REBASE_OPCODE_DO_REBASE_ADD_ADDR_ULEB, REBASE_OPCODE_DO_REBASE_ULEB_TIMES_SKIPPING_ULEB,
        REBASE_TYPE_POINTER, BIND_OPCODE_MASK, BIND_IMMEDIATE_MASK, BIND_OPCODE_DONE,
        BIND_OPCODE_SET_DYLIB_ORDINAL_IMM, BIND_OPCODE_SET_DYLIB_ORDINAL_ULEB,
        BIND_OPCODE_SET_SYMBOL_TRAILING_FLAGS_IMM, BIND_OPCODE_SET_TYPE_IMM,
        BIND_OPCODE_SET_ADDEND_SLEB, BIND_OPCODE_SET_SEGMENT_AND_OFFSET_ULEB,
        BIND_OPCODE_ADD_ADDR_ULEB, BIND_OPCODE_DO_BIND, BIND_OPCODE_DO_BIND_ADD_ADDR_ULEB,
        BIND_OPCODE_DO_BIND_ADD_ADDR_IMM_SCALED, BIND_OPCODE_DO_BIND_ULEB_TIMES_SKIPPING_ULEB,
        BIND_TYPE_POINTER, EXPORT_SYMBOL_FLAGS_KIND_REGULAR};
    // clang-format on
    std::ifstream file(std::string(CALL_LOGS) + "/Constants.txt");
    for (const std::int64_t constant : constants) {
        std::string name;
        std::int64_t value = 0;
        ASSERT_TRUE(file >> name >> value);
        EXPECT_EQ(constant, value) << name;
    }
}

} // namespace
