#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFString.h>
#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>

#include "support/NewText.h"

#include <gmock/gmock.h>

#include <thread>

using macplatform::DescribeLiveObjects;
using macplatform::LiveObjectCount;
using testing::ElementsAre;

namespace {

TEST(Objects, AreListedInOrderOfCreation) {
    const CFStringRef first = NewText("first");
    const CFStringRef gone = NewText("gone");
    const CFStringRef second = NewText("say \"2\"\n");
    CFRetain(second);
    CFRelease(gone);
    EXPECT_THAT(DescribeLiveObjects(),
                ElementsAre("string \"first\", 1 reference", "string \"say \\\"2\\\"\\n\", 2 references"));
    CFRelease(first);
    CFRelease(second);
    CFRelease(second);
    EXPECT_THAT(DescribeLiveObjects(), ElementsAre());
}

TEST(Objects, ConstantsAreNeverFreedOrListed) {
    for (const CFTypeRef constant : {CFTypeRef(CFSTR("constant")), CFTypeRef(kCFAllocatorSystemDefault),
                                     CFTypeRef(NewText("")), CFTypeRef(CFSTR(""))}) {
        CFRelease(constant);
        CFRetain(constant);
        EXPECT_EQ(CFGetRetainCount(constant), 0x7FFFFFFF);
    }
    EXPECT_THAT(DescribeLiveObjects(), ElementsAre());
    EXPECT_EQ(kCFAllocatorDefault, nullptr);
}

TEST(Objects, CountReferencesOfTwoThreadsExactly) {
    const CFStringRef text = NewText("shared");
    const auto work = [text] {
        for (int i = 0; i < 20000; ++i) {
            CFRetain(text);
            CFRelease(NewText("own"));
            CFRelease(text);
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(CFGetRetainCount(text), 1);
    CFRelease(text);
    EXPECT_EQ(LiveObjectCount(), 0U);
}

TEST(ObjectsDeathTest, ReportMisuseAndAbort) {
    EXPECT_DEATH(CFRelease(nullptr), "CFRelease: the object is NULL");
    EXPECT_DEATH(
        {
            const CFStringRef text = NewText("abc");
            CFRelease(text);
            CFRelease(text);
        },
        "CFRelease: the object at 0x[0-9a-f]+ was freed before");
    static const std::uint64_t none[16] = {};
    EXPECT_DEATH(CFGetTypeID(none), "CFGetTypeID: there is no object at 0x");
}

TEST(Objects, FailWhereAFaultIsInjected) {
    macplatform::InjectFault({"CFStringCreateWithCString", 0, 1});
    macplatform::InjectFault({"CFNumberCreate"});
    const CFStringRef text = NewText("a\nb");
    EXPECT_EQ(NewText("failed"), nullptr);
    CFRelease(text);
    const SInt8 byte = -1;
    EXPECT_EQ(CFNumberCreate(nullptr, kCFNumberSInt8Type, &byte), nullptr);
    macplatform::InjectFault({"CFEqual"});
    EXPECT_EQ(macplatform::CancelInjectedFaults(), 1U);
    EXPECT_TRUE(CFEqual(CFSTR("a"), CFSTR("a"))) << "a cancelled fault has no effect";
}

} // namespace
