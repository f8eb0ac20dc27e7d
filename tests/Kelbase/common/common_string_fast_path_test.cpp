// The fast paths of searching, number parsing and formatting return the same results as the
// general path, for every input.

#include <Kelbase/common/common_string.h>

#include "Kelbase/common/TextBytes.h"
#include "support/CommaLocale.h"
#include <fuzz/NumberModel.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <optional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

using number_model::Parsed;

namespace {

/// Calls `check` with every text of up to `longest` characters of `alphabet`.
void forEachText(std::string_view alphabet, std::size_t longest,
                 const std::function<void(const std::string&)>& check) {
    std::string text;
    const std::function<void()> extend = [&] {
        check(text);
        if (text.size() == longest) return;
        for (const char c : alphabet) {
            text.push_back(c);
            extend();
            text.pop_back();
        }
    };
    extend();
}

template <typename T>
bool areSame(T a, T b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Throws std::logic_error if the results differ, so that the test ends with its first difference.
template <typename T>
void requireSame(const Parsed<T>& seen, const Parsed<T>& expected, const char* function, unsigned int base,
                 std::string_view text) {
    if (seen.ok == expected.ok && areSame(seen.value, expected.value)) return;
    std::ostringstream message;
    message << function << " of " << testing::PrintToString(std::string(text)) << " in base " << base << ": "
            << seen.value << (seen.ok ? "" : " (failed)") << ", expected " << expected.value
            << (expected.ok ? "" : " (failed)");
    throw std::logic_error(message.str());
}

void requireSameReal(const std::string& text, char point) {
    const String string(text.c_str());
    const Parsed<double> expected = number_model::ToDouble(text, point);
    Parsed<double> real = {!expected.ok, 0};
    real.value = string.ToDouble(&real.ok);
    requireSame(real, expected, "ToDouble", 10, text);
    Parsed<float> narrow = {!expected.ok, 0};
    narrow.value = string.ToFloat(&narrow.ok);
    requireSame(narrow, {expected.ok, static_cast<float>(expected.value)}, "ToFloat", 10, text);
}

void requireSameIntegers(const std::string& text, unsigned int base) {
    const String string(text.c_str());
    const number_model::Integers expected(text, base);
    const auto require = [&](const auto& model, auto parse, const char* function) {
        auto seen = model;
        seen.ok = !model.ok;
        seen.value = (string.*parse)(&seen.ok, base);
        requireSame(seen, model, function, base, text);
    };
    require(expected.toShort, &String::ToShort, "ToShort");
    require(expected.toUShort, &String::ToUShort, "ToUShort");
    require(expected.toInt, &String::ToInt, "ToInt");
    require(expected.toUInt, &String::ToUInt, "ToUInt");
    require(expected.toInt64, &String::ToInt64, "ToInt64");
    require(expected.toUInt64, &String::ToUInt64, "ToUInt64");
}

/// Runs each test in a locale with the decimal separator "." and in one with ",".
class NumberFastPathInLocale : public testing::TestWithParam<char> {
protected:
    void SetUp() override {
        if (GetParam() != ',') return;
        if (!locale.emplace().IsSet()) {
            GTEST_SKIP() << "no locale with a decimal comma is installed, and localedef cannot make one";
        }
    }

    std::optional<CommaLocale> locale;
};

TEST(SearchFastPath, FindsWhatTheCLibraryFinds) {
    forEachText("ab", 7, [](const std::string& end) {
        for (const std::size_t before : {1, 300}) {
            const std::string text = std::string(before, 'c') + end;
            const String string(text.c_str());
            forEachText("ab", 4, [&](const std::string& part) {
                const char* const found = std::strstr(string.Latin1(), part.c_str());
                const auto place = string.Find(part.c_str());
                ASSERT_EQ(place.IsGiven() ? string.Latin1() + place : nullptr, found) << text << ' ' << part;
            });
        }
    });
}

} // namespace

TEST_P(NumberFastPathInLocale, ReadsRealsAsTheCLibrary) {
    forEachText("07+-.,e x", 6, [](const std::string& text) { requireSameReal(text, GetParam()); });
    forEachText("1.E+\t\xA0", 5, [](const std::string& text) { requireSameReal(text, GetParam()); });

    const std::string_view pieces[] = {"9007199254740993",
                                       "123456789",
                                       "000000",
                                       "5",
                                       ".",
                                       ",",
                                       "e",
                                       "E",
                                       "-",
                                       "+",
                                       "22",
                                       "23",
                                       " ",
                                       "1",
                                       "0",
                                       "\uFF10",
                                       "\uFF15"};
    std::mt19937 random(1905);
    for (int round = 0; round < 100000; ++round) {
        std::string text;
        for (unsigned int count = random() % 8; count > 0; --count)
            text += pieces[random() % std::size(pieces)];
        requireSameReal(text, GetParam());
    }
}

TEST_P(NumberFastPathInLocale, PrintsRealsAsTheCLibrary) {
    std::mt19937_64 random(1848);
    const double edges[] = {
        0.0,       -0.0,    0.5,    2.5,    DBL_MIN, DBL_MAX,        DBL_TRUE_MIN, INFINITY,
        -INFINITY, NAN,     0x1p62, 0x1p63, -0x1p63, 0x1p-76,        0x1.8p-76,    0x1p-77,
        0x1p-12,   0x1p-13, 0x1p52, 0x1p53, 1e22,    999999.9999995, 9.9999999995, 0.000244140625,
        1e-10};
    std::vector<double> values(std::begin(edges), std::end(edges));
    for (int i = 0; i < 400; ++i) {
        const auto mantissa = static_cast<double>(random() >> 11);
        values.push_back(std::ldexp(mantissa, -static_cast<int>(random() % 160)));
        values.push_back(-static_cast<double>(random() % 100000) / static_cast<double>(2 << random() % 20));
        const std::uint64_t anyBits = random();
        std::memcpy(&values.emplace_back(), &anyBits, sizeof anyBits);
    }
    for (const double value : values) {
        for (const char letter : {'f', 'F', 'e', 'E', 'g', 'G'}) {
            EXPECT_EQ(Bytes(String::Number(value, 0xFFFFFFFF, letter)),
                      number_model::Printed(value, -1, letter));
            for (const int precision : {0, 1, 2, 8, 9, 10, 17, 99}) {
                const auto wanted = static_cast<unsigned int>(precision);
                const std::string expected = number_model::Printed(value, precision, letter);
                EXPECT_EQ(Bytes(String::Number(value, wanted, letter)), expected) << letter << precision;
                EXPECT_EQ(Bytes(String("<%1>").Arg(value, wanted, letter)), "<" + expected + ">");
                if (std::isfinite(value)) requireSameReal(expected, GetParam());
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Separator, NumberFastPathInLocale, testing::Values('.', ','),
                         [](const auto& separator) {
                             return separator.param == ',' ? std::string("Comma") : std::string("Point");
                         });

TEST(NumberFastPath, ReadsEveryByteAsDigitOfEveryBase) {
    for (unsigned int base = 0; base <= 80; ++base) {
        for (int byte = 1; byte < 256; ++byte) {
            const std::string text(1, static_cast<char>(byte));
            for (const char* before : {"", "1", "-", "z"}) requireSameIntegers(before + text, base);
        }
    }
}

TEST(NumberFastPath, ReadsEveryShortTextAsInteger) {
    for (const unsigned int base : {0u, 1u, 2u, 8u, 10u, 11u, 16u, 36u, 37u, 40u, 62u, 80u, UINT_MAX}) {
        forEachText("01+- 9aZ{\xA0", 4, [base](const std::string& text) { requireSameIntegers(text, base); });
    }
}

TEST(NumberFastPath, ReadsIntegersAtTheLimitsOfEachWidth) {
    const unsigned long long limits[] = {32767, 65535, INT_MAX, UINT_MAX, LLONG_MAX, ULLONG_MAX};
    for (unsigned int base = 2; base <= 36; ++base) {
        for (const unsigned long long limit : limits) {
            for (const unsigned long long value : {limit - 1, limit, limit + 1}) {
                const std::string digits = number_model::DigitsOf(value, base, 0);
                for (const char* sign : {"", "+", "-"}) {
                    requireSameIntegers(sign + digits, base);
                    requireSameIntegers(sign + digits + "0", base);
                }
            }
            std::string above = number_model::DigitsOf(limit, base, 0);
            above.back() = number_model::DigitsOf(base - 1, base, 0).back();
            requireSameIntegers(above, base);
        }
    }
    for (unsigned int base = 37; base <= 80; ++base) { // bytes that are digits with a value above the base
        for (const std::size_t length : {3, 6, 7, 8, 10, 11, 12, 13}) {
            for (const char c : {'0', 'z', '{', '\x7F'})
                requireSameIntegers("1" + std::string(length, c), base);
        }
    }
}

TEST(NumberFastPath, PrintsIntegersDigitByDigit) {
    std::mt19937_64 random(1789);
    const auto expectPrinted = [](unsigned long long value, unsigned int base, unsigned int width) {
        const auto narrow = static_cast<unsigned int>(value);
        const std::string digits = number_model::DigitsOf(narrow, base, width);
        EXPECT_EQ(Bytes(String::Number(narrow, base, width)), digits);
        EXPECT_EQ(Bytes(String("<%1>").Arg(narrow, base, width)), "<" + digits + ">");
        const auto whole = static_cast<unsigned long>(value);
        EXPECT_EQ(Bytes(String::Number(whole, base, width)), number_model::DigitsOf(whole, base, width));
        const unsigned int wideBase = base == 16 ? 16 : 10;
        const std::string wide = number_model::DigitsOf(value, wideBase, width);
        EXPECT_EQ(Bytes(String::Number(value, base, width)), wide);
        EXPECT_EQ(Bytes(String("<%1>").Arg(value, base, width)), "<" + wide + ">");
    };
    for (unsigned int base = 2; base <= 36; ++base) {
        for (unsigned long long power = 1; power < ULLONG_MAX / base; power *= base) {
            for (const unsigned long long value : {power - 1, power, power + 1})
                expectPrinted(value, base, 0);
        }
        for (const unsigned int width : {0u, 1u, 7u, 40u}) {
            expectPrinted(ULLONG_MAX, base, width);
            for (int i = 0; i < 50; ++i) expectPrinted(random() >> random() % 64, base, width);
        }
    }
}
