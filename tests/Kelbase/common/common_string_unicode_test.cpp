#include <Kelbase/common/common_string.h>

#include "TextBytes.h"

#include <gtest/gtest.h>

TEST(StringUnicode, ConvertsBothWays) {
    const unsigned short units[] = {'h', 0xE9, 0x20AC, 0xD83D, 0xDE00, 0};
    const char* const utf8 = "h\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_EQ(Bytes(String(units, 1)), utf8);
    const auto back = String(utf8).Unicode(1);
    ASSERT_TRUE(back);
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(back[i], units[i]) << i;

    const unsigned short roman[] = {0xE9, 0x20AC, 0};
    EXPECT_EQ(Bytes(String(roman, 2)), "\x8E\xDB");
    EXPECT_EQ(String("\xDB").Unicode(2)[0], 0x20AC);
}

TEST(StringUnicode, ReturnsNothingForInvalidInput) {
    const unsigned short hiragana[] = {0x3042, 0}, loneSurrogate[] = {'a', 0xD800, 0}, nothing[] = {0};
    EXPECT_EQ(String(hiragana, 2).GetLength(), 0u);
    EXPECT_EQ(String(loneSurrogate, 1).GetLength(), 0u);
    EXPECT_EQ(String(nothing, 1).GetLength(), 0u);
    EXPECT_EQ(String(static_cast<const unsigned short*>(nullptr), 1).GetLength(), 0u);
    EXPECT_FALSE(String("\xC3(").Unicode(1));
    EXPECT_EQ(String().Unicode(1)[0], 0);
}

TEST(StringUnicode, LimitsTheLengthToConvert) {
    std::vector<unsigned short> units(100000, 'u');
    units.back() = 0;
    EXPECT_EQ(String(units.data(), 1).GetLength(), 99999u);
    units.back() = 'u'; // 100,000 units without a terminator: no further unit is read
    EXPECT_EQ(String(units.data(), 1).GetLength(), 0u);

    const std::string most(100000, 'x');
    EXPECT_TRUE(String(most.c_str()).Unicode(1));
    EXPECT_FALSE(String((most + "x").c_str()).Unicode(1));
}
