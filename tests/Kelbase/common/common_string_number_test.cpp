#include <Kelbase/common/common_string.h>

#include <Kelbase/common/detail/common_string_decimal.h>

#include "TextBytes.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <stdexcept>

TEST(StringArg, FillsTheLowestPlaceholder) {
    struct Row {
        const char *format, *argument, *expected;
    };
    const Row rows[] = {
        {"a%2b%1c", "X", "a%2bXc"}, {"%1%1", "X", "X%1"},
        {"none", "X", "noneX"},     {"", "X", "X"},
        {"100%", "X", "100%X"},     {"%1 %0", "X", "%1 X"},
        {"%10", "X", "X0"},         {"%%1", "X", "%X"},
        {"%a%9", "X", "%aX"},       {"%1", "%1%0", "%1%0"},
        {"%1-", "", "-"},           {"%\xC3%2", "X", "%\xC3X"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Bytes(String(row.format).Arg(row.argument)), row.expected) << row.format;
    EXPECT_EQ(Bytes(String().Arg('c')), "c");
    EXPECT_EQ(Bytes(String("%1%2").Arg(Char('c')).Arg(7)), "c7");
}

TEST(StringNumber, Formats32BitIntegers) {
    EXPECT_EQ(Bytes(String::Number(255u, 16)), "FF");
    EXPECT_EQ(Bytes(String::Number(255u, 1)), "255");
    EXPECT_EQ(Bytes(String::Number(255u, 37)), "255");
    EXPECT_EQ(Bytes(String::Number(5u, 10, 3)), "005");
    EXPECT_EQ(Bytes(String::Number(1234u, 10, 2)), "1234");
    EXPECT_EQ(Bytes(String::Number(0)), "0");
    EXPECT_EQ(Bytes(String::Number(-5, 10, 3)), "-005");
    EXPECT_EQ(Bytes(String::Number(-1, 16)), "-1");
    EXPECT_EQ(Bytes(String::Number(UINT_MAX, 2)), std::string(32, '1'));
    EXPECT_EQ(Bytes(String::Number(INT_MIN)), "-2147483648");
    EXPECT_EQ(Bytes(String::Number(INT_MIN, 10, 3)), "-214748364008")
        << "formatted as two parts, each with the width";
    EXPECT_EQ(Bytes(String::Number(INT_MIN, 36)), "-ZIK0ZK");
}

TEST(StringNumber, ArgFormatsOnlyIntAndLongAsBitsInBase16) {
    const String one("%1");
    EXPECT_EQ(Bytes(one.Arg(-1, 16)), "FFFFFFFF");
    EXPECT_EQ(Bytes(one.Arg(-1L, 16)), "FFFFFFFF") << "also if long has 64 bits";
    EXPECT_EQ(Bytes(one.Arg(static_cast<short>(-1), 16)), "-1");
    EXPECT_EQ(Bytes(one.Arg(static_cast<unsigned short>(65535), 16)), "FFFF");
    EXPECT_EQ(Bytes(String::Number(static_cast<long>(INT_MIN), 10, 3)), "-214748364008");
    EXPECT_EQ(Bytes(String::Number(-1LL, 16)), "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(Bytes(one.Arg(LONG_MAX)), std::to_string(LONG_MAX));
    EXPECT_EQ(Bytes(one.Arg(LONG_MIN)), std::to_string(LONG_MIN));
}

TEST(StringNumber, FormatsDecimalWithoutWidthByDefault) {
    const String text("%1");
    const auto expectTwelve = [&text](auto value) {
        EXPECT_EQ(Bytes(text.Arg(value)), "12");
        if constexpr (sizeof value >= sizeof(int)) {
            EXPECT_EQ(Bytes(String::Number(value)), "12");
        }
    };
    expectTwelve(static_cast<short>(12));
    expectTwelve(static_cast<unsigned short>(12));
    expectTwelve(12);
    expectTwelve(12U);
    expectTwelve(12L);
    expectTwelve(12UL);
    expectTwelve(12LL);
    expectTwelve(12ULL);
    EXPECT_EQ(Bytes(text.Arg(1.5)), "1.500000");
    EXPECT_EQ(Bytes(text.Arg(1.5F)), "1.500000");
    EXPECT_EQ(Bytes(String::Number(1.5F)), "1.500000");
}

TEST(StringNumber, Formats64BitIntegersInTwoBases) {
    EXPECT_EQ(Bytes(String::Number(255ull, 2)), "255");
    EXPECT_EQ(Bytes(String::Number(255ull, 16)), "FF");
    EXPECT_EQ(Bytes(String::Number(LLONG_MIN)), "-9223372036854775808");
    EXPECT_EQ(Bytes(String::Number(ULLONG_MAX)), "18446744073709551615");
    EXPECT_EQ(Bytes(String::Number(-5LL, 10, 3)), "-005");
}

TEST(StringNumber, RejectsAWidthOf4GiBBeforeItAllocates) {
    EXPECT_THROW(String::Number(-5, 10, 0xFFFFFFFF), std::length_error);
    EXPECT_THROW(String::Number(-5LL, 10, 0xFFFFFFFF), std::length_error);
    EXPECT_THROW(String::Number(INT_MIN, 10, 0x80000000), std::length_error) << "two parts with this width";
}

TEST(StringNumber, FormatsFloatingPointAsPrintfDoes) {
    EXPECT_EQ(Bytes(String::Number(1.5)), "1.500000");
    EXPECT_EQ(Bytes(String::Number(1.5, 2)), "1.50");
    EXPECT_EQ(Bytes(String::Number(1.5, 2, 'e')), "1.50e+00");
    EXPECT_EQ(Bytes(String::Number(1.5, 2, 'x')), "1.50");
    EXPECT_EQ(Bytes(String::Number(2.5f, 0)), "2") << "rounded half to even";
    EXPECT_EQ(Bytes(String::Number(INFINITY, 2, 'F')), "INF");
    EXPECT_EQ(String::Number(1e308, 150).GetLength(), 309u + 1 + 99);
    g_chDecimalPoint = ',';
    EXPECT_EQ(Bytes(String::Number(-1.5, 1)), "-1,5");
    g_chDecimalPoint = '.';
}
