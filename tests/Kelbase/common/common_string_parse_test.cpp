#include <Kelbase/common/common_string.h>

#include "support/CommaLocale.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <optional>
#include <string>

TEST(StringParse, ParsesTheWholeTextOrFails) {
    struct Row {
        const char* text;
        unsigned int base;
        bool ok;
        int value;
    };
    // Full-width digits and the minus sign are accepted. Base 1 has the digit 0.
    const Row rows[] = {
        // text, base, ok, value
        {" 42 ", 10, true, 42},
        {"4 2", 10, false, 0},
        {"", 10, false, 0},
        {"  ", 10, false, 0},
        {"+7", 10, true, 7},
        {"--7", 10, false, 0},
        {"-", 10, false, 0},
        {"ff", 16, true, 255},
        {"FF", 16, true, 255},
        {"0xff", 16, false, 0},
        {"19", 8, false, 0},
        {"zZ", 36, true, 1295},
        {"2147483647", 10, true, INT_MAX},
        {"2147483648", 10, false, 0},
        {"-2147483648", 10, true, INT_MIN},
        {"-2147483649", 10, false, 0},
        {"4294967296", 10, false, 0},
        {"1.0", 10, false, 0},
        {"\xEF\xBC\x91\xEF\xBC\x92", 10, true, 12},
        {"\xE2\x88\2225", 10, true, -5},
        {"5\xE9", 10, false, 0},
        {"{", 36, false, 0},
        {"0", 0, false, 0},
        {"000", 1, true, 0},
        {"1", 1, false, 0},
        {"2", 37, true, 2},
        {"z", 37, true, 35},
        {"10", 40, true, 40},
        {"^", 40, true, 39},
        {"_", 40, false, 0},
        {"{", 37, true, 68},
        {"7", UINT_MAX, true, 7},
    };
    for (const Row& row : rows) {
        bool ok = !row.ok;
        EXPECT_EQ(String(row.text).ToInt(&ok, row.base), row.value) << row.text;
        EXPECT_EQ(ok, row.ok) << row.text << " in base " << row.base;
    }
}

namespace {

template <typename T>
void expectParsed(T (String::*parse)(bool*, unsigned int) const, const char* text, bool good, T value) {
    bool ok = !good;
    EXPECT_EQ((String(text).*parse)(&ok, 10), value) << text;
    EXPECT_EQ(ok, good) << text;
}

} // namespace

TEST(StringParse, AcceptsTheRangeOfEachWidth) {
    expectParsed<short>(&String::ToShort, "32767", true, 32767);
    expectParsed<short>(&String::ToShort, "32768", false, 0);
    expectParsed<short>(&String::ToShort, "-32768", true, -32768);
    expectParsed<short>(&String::ToShort, "-40000", true, 25536);
    expectParsed<short>(&String::ToShort, "-65535", true, 1);
    expectParsed<short>(&String::ToShort, "-65536", false, 0);
    expectParsed<unsigned short>(&String::ToUShort, "65535", true, 65535);
    expectParsed<unsigned short>(&String::ToUShort, "65536", false, 0);
    expectParsed<unsigned int>(&String::ToUInt, "4294967295", true, UINT_MAX);
    expectParsed<unsigned int>(&String::ToUInt, "4294967296", false, 0);
    expectParsed<unsigned int>(&String::ToUInt, "-7", false, 0);
    expectParsed<long long>(&String::ToInt64, "2147483648", true, INT_MIN);
    expectParsed<long long>(&String::ToInt64, "3000000000", true, -1294967296);
    expectParsed<long long>(&String::ToInt64, "4294967296", false, 0);
    expectParsed<long long>(&String::ToInt64, "-0", true, 0);
    expectParsed<long long>(&String::ToInt64, "-5", false, 0);
    expectParsed<unsigned long long>(&String::ToUInt64, "18446744073709551615", true, ULLONG_MAX);
    expectParsed<unsigned long long>(&String::ToUInt64, "18446744073709551616", false, 0);
    const String twelve("12"); // a default base other than 10 gives another value
    EXPECT_EQ(twelve.ToShort(), 12);
    EXPECT_EQ(twelve.ToUShort(), 12U);
    EXPECT_EQ(twelve.ToInt(), 12);
    EXPECT_EQ(twelve.ToUInt(), 12U);
    EXPECT_EQ(twelve.ToInt64(), 12);
    EXPECT_EQ(twelve.ToUInt64(), 12U);
}

/// Runs each test in a locale with the decimal separator "." and in one with ",".
class StringParseReal : public testing::TestWithParam<char> {
protected:
    void SetUp() override {
        if (GetParam() != ',') return;
        if (!locale.emplace().IsSet()) {
            GTEST_SKIP() << "no locale with a decimal comma is installed, and localedef cannot make one";
        }
    }

    std::optional<CommaLocale> locale;
};

TEST_P(StringParseReal, AcceptsPointAndComma) {
    struct Row {
        const char* text;
        bool ok;
        double value;
    };
    // Full-width digits, hyphen-minus and full stop are accepted, and so is the ideographic full stop.
    const Row rows[] = {{"1,5", true, 1.5},
                        {"1.5", true, 1.5},
                        {" 2.5 ", true, 2.5},
                        {"1.000,5", false, 0},
                        {"1e3", true, 1000},
                        {"-0,25", true, -0.25},
                        {"", false, 0},
                        {"  ", false, 0},
                        {"1.5x", false, 0},
                        {"1.5 x", false, 0},
                        {"5e ", false, 0},
                        {"3,5e+\t", false, 0},
                        {".5e\n", false, 0},
                        {"5e1 ", true, 50},
                        {"inf", true, INFINITY},
                        {"\xEF\xBC\x91\xE3\x80\x82\xEF\xBC\x92", true, 1.2},
                        {"\xEF\xBC\2151\xEF\xBC\2165", true, -1.5},
                        {"\xE9", false, 0}};
    for (const Row& row : rows) {
        bool ok = !row.ok;
        EXPECT_EQ(String(row.text).ToDouble(&ok), row.value) << row.text;
        EXPECT_EQ(ok, row.ok) << row.text;
    }
    String withNul("1");
    withNul += '\0';
    bool ok = true;
    EXPECT_EQ(withNul.ToDouble(&ok), 0.0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(String("0,1").ToFloat(), 0.1f);
    EXPECT_EQ(String("-1e300").ToFloat(), -INFINITY);
    EXPECT_EQ(String("1,5").ToInt(), 0) << "not an integer";
    EXPECT_EQ(String::Number(1.5, 1).Latin1()[1], GetParam()) << "formatted as printf does";
}

INSTANTIATE_TEST_SUITE_P(Separator, StringParseReal, testing::Values('.', ','), [](const auto& separator) {
    return separator.param == ',' ? std::string("Comma") : std::string("Point");
});
