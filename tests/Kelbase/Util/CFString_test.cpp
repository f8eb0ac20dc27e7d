#include <Kelbase/Util/CFString.h>

#include <gtest/gtest.h>
#include <macplatform/CallLog.h>
#include <macplatform/LiveObjects.h>
#include <string>
#include <vector>

namespace {

using Util::CFString;

CFStringRef fromUnits(const std::vector<UniChar>& units) {
    return CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(),
                                        static_cast<CFIndex>(units.size()));
}

TEST(CFString, ConvertsToAPlatformStringAndBack) {
    const struct {
        String text;
        CFIndex units;
        const char* back;
    } rows[] = {
        {"InstalledProducts/%1/CurrentVersion", 35, "InstalledProducts/%1/CurrentVersion"},
        {"a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E", 5, "a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E"},
        {String(), 0, ""},
        // invalid UTF-8
        {"\xE9", 0, ""},
        {"good\xFFgood", 0, ""},
        {"\xED\xA0\x80", 0, ""},
    };
    const std::size_t before = macplatform::LiveObjectCount();
    for (const auto& row : rows) {
        const CFString held(row.text, CFString::kReleaseOnDestroy);
        EXPECT_EQ(CFStringGetLength(held.GetRef()), row.units) << row.text.Latin1();
        EXPECT_STREQ(held.ToString().Latin1(), row.back);
    }
    EXPECT_EQ(macplatform::LiveObjectCount(), before);
}

TEST(CFString, ReturnsEmptyTextForInvalidOrTooLongStrings) {
    const auto textOf = [](const std::vector<UniChar>& units) {
        return CFString(fromUnits(units), CFString::kReleaseOnDestroy).ToString();
    };
    EXPECT_STREQ(textOf({'a', 0, 'b'}).Latin1(), "a");
    EXPECT_STREQ(textOf({'a', 0xD834}).Latin1(), "");
    EXPECT_EQ(textOf(std::vector<UniChar>(1000000, 0x20AC)).GetLength(), 3000000U);
    EXPECT_EQ(textOf(std::vector<UniChar>(1000001, 'a')).GetLength(), 0U);
}

TEST(CFString, ReleasesOnlyWithReleaseOnDestroy) {
    const CFStringRef text = fromUnits({'t', 'e', 'x', 't'});
    { const CFString borrowed(text, CFString::kDontRelease); }
    { const CFString alsoBorrowed(text, static_cast<CFString::ReleaseBehavior>(2)); }
    EXPECT_EQ(CFGetRetainCount(text), 1);
    CFRetain(text);
    { const CFString owned(text, CFString::kReleaseOnDestroy); }
    EXPECT_EQ(CFGetRetainCount(text), 1);
    CFRelease(text);
}

TEST(CFString, HoldsAnEmptyStringForNullAndAfterAFailure) {
    const CFString fromReference(static_cast<CFStringRef>(nullptr), CFString::kReleaseOnDestroy);
    const CFString fromText(static_cast<const char*>(nullptr), CFString::kReleaseOnDestroy);
    macplatform::InjectFault({"CFStringCreateWithCString"});
    macplatform::InjectFault({"CFStringCreateWithCString"});
    const CFString refused("text", CFString::kReleaseOnDestroy);
    EXPECT_EQ(macplatform::CancelInjectedFaults(), 0U);
    for (const CFString* held : {&fromReference, &fromText, &refused}) {
        ASSERT_NE(held->GetRef(), nullptr);
        EXPECT_EQ(CFStringGetLength(held->GetRef()), 0);
    }
}

} // namespace
