#include <Kelbase/Util/CFString.h>

#include <gtest/gtest.h>
#include <macplatform/Journal.h>
#include <macplatform/LiveObjects.h>
#include <string>
#include <vector>

namespace {

using Util::CFString;

CFStringRef fromUnits(const std::vector<UniChar>& units) {
    return CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(),
                                        static_cast<CFIndex>(units.size()));
}

struct TextCase {
    const char* name;
    String text;
    CFIndex units;
    std::string back;
};

class CFStringText : public testing::TestWithParam<TextCase> {};

TEST_P(CFStringText, GoesToThePlatformAndBack) {
    const std::size_t before = macplatform::LiveObjectCount();
    {
        const CFString held(GetParam().text, CFString::kReleaseOnDestroy);
        EXPECT_EQ(CFStringGetLength(held.GetRef()), GetParam().units);
        EXPECT_EQ(held.ToString().Latin1(), GetParam().back);
    }
    EXPECT_EQ(macplatform::LiveObjectCount(), before);
}

INSTANTIATE_TEST_SUITE_P(Texts, CFStringText,
                         testing::Values(TextCase{"Ascii", "InstalledProducts/%1/CurrentVersion", 35,
                                                  "InstalledProducts/%1/CurrentVersion"},
                                         TextCase{"OneToFourBytes", "a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E",
                                                  5, "a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E"},
                                         TextCase{"NullString", String(), 0, ""},
                                         TextCase{"LoneLatin1Byte", "\xE9", 0, ""},
                                         TextCase{"OneBadByteInGoodText", "good\xFFgood", 0, ""},
                                         TextCase{"Surrogate", "\xED\xA0\x80", 0, ""}),
                         [](const auto& row) { return row.param.name; });

struct UnitsCase {
    const char* name;
    std::vector<UniChar> units;
    std::string text;
};

class CFStringUnits : public testing::TestWithParam<UnitsCase> {};

TEST_P(CFStringUnits, BecomeTextOrNothing) {
    const CFString held(fromUnits(GetParam().units), CFString::kReleaseOnDestroy);
    EXPECT_TRUE(held.ToString().Latin1() == GetParam().text);
}

std::string manyEuros(std::size_t count) {
    std::string text;
    while (count-- > 0) text += "\xE2\x82\xAC";
    return text;
}

INSTANTIATE_TEST_SUITE_P(Units, CFStringUnits,
                         testing::Values(UnitsCase{"EndsAtNul", {'a', 0, 'b'}, "a"},
                                         UnitsCase{"LoneHighSurrogate", {'a', 0xD834}, ""},
                                         UnitsCase{"LoneLowSurrogate", {0xDD1E}, ""},
                                         UnitsCase{"LongestText", std::vector<UniChar>(1000000, 0x20AC),
                                                   manyEuros(1000000)},
                                         UnitsCase{"OneUnitTooLong", std::vector<UniChar>(1000001, 'a'), ""}),
                         [](const auto& row) { return row.param.name; });

TEST(CFStringOwnership, OnlyReleaseOnDestroyReleases) {
    const CFStringRef text = fromUnits({'t', 'e', 'x', 't'});
    { const CFString borrowed(text, CFString::kDontRelease); }
    { const CFString alsoBorrowed(text, static_cast<CFString::ReleaseBehavior>(2)); }
    EXPECT_EQ(CFGetRetainCount(text), 1);

    CFRetain(text);
    { const CFString owned(text, CFString::kReleaseOnDestroy); }
    EXPECT_EQ(CFGetRetainCount(text), 1);
    CFRelease(text);
}

TEST(CFStringFallback, NullBecomesAnEmptyStringUnderTheSameFlag) {
    const std::size_t before = macplatform::LiveObjectCount();
    {
        const CFString owned(static_cast<CFStringRef>(nullptr), CFString::kReleaseOnDestroy);
        EXPECT_EQ(CFStringGetLength(owned.GetRef()), 0);
        const CFString fromNullText(static_cast<const char*>(nullptr), CFString::kReleaseOnDestroy);
        EXPECT_EQ(CFStringGetLength(fromNullText.GetRef()), 0);
    }
    EXPECT_EQ(macplatform::LiveObjectCount(), before);

    CFStringRef left = nullptr;
    {
        const CFString borrowed(static_cast<CFStringRef>(nullptr), CFString::kDontRelease);
        left = borrowed.GetRef();
    }
    EXPECT_EQ(CFStringGetLength(left), 0);
    CFRelease(left);
}

TEST(CFStringFallback, HoldsAStringEvenWhenThePlatformMakesNone) {
    macplatform::OrderFault({"CFStringCreateWithCString"});
    macplatform::OrderFault({"CFStringCreateWithCString"});
    const CFString held("text", CFString::kReleaseOnDestroy);
    EXPECT_EQ(macplatform::CancelFaults(), 0U);
    ASSERT_NE(held.GetRef(), nullptr);
    EXPECT_EQ(held.ToString().GetLength(), 0U);
}

} // namespace
