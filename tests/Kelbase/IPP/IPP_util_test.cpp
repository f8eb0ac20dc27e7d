#include <Kelbase/IPP/IPP_util.h>

#include <Kelbase/IPP/IPP_implementations.h>
#include <Kelbase/Util/math_utils.h>

#include <gmock/gmock.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <tuple>
#include <vector>

namespace {

using IPP::Implementation;

const float kNan = std::numeric_limits<float>::quiet_NaN();
const float kInfinity = std::numeric_limits<float>::infinity();
const float kDenormal = std::numeric_limits<float>::denorm_min();

/// Returns elements with a fixed byte pattern, which reveals a store outside the destination.
template <typename T>
std::vector<T> guarded(std::size_t size) {
    std::vector<T> result(size);
    std::memset(result.data(), 0xA5, size * sizeof(T));
    return result;
}

template <typename T>
testing::AssertionResult sameBytes(const std::vector<T>& a, const std::vector<T>& b) {
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::memcmp(&a[i], &b[i], sizeof(T)) != 0)
            return testing::AssertionFailure() << "at " << i << ": " << +a[i] << ", not " << +b[i];
    return testing::AssertionSuccess();
}

/// Runs each test with every implementation except the scalar one, which is the reference. The tests
/// with literals below verify the scalar implementation, because every implementation passes a
/// single element to it.
class WideImplementation : public testing::TestWithParam<const Implementation*> {
protected:
    void SetUp() override {
        if (!GetParam()->isSupported()) GTEST_SKIP() << "this processor has no " << GetParam()->name;
    }

    /// Runs the routine of the implementation and of the scalar one. All bytes must be equal, also those
    /// around the destination.
    template <typename Source, typename Target, typename... Factor>
    testing::AssertionResult AsScalar(void (*Implementation::*routine)(unsigned int, const Source*, Target*,
                                                                       Factor...),
                                      const std::vector<Source>& source, Factor... factor) {
        std::vector<Target> expected = guarded<Target>(source.size() + 2), actual = expected;
        const unsigned int count = static_cast<unsigned int>(source.size());
        (IPP::kScalarImplementation.*routine)(count, source.data(), expected.data() + 1, factor...);
        (GetParam()->*routine)(count, source.data(), actual.data() + 1, factor...);
        return sameBytes(actual, expected);
    }

    /// Compares with the scalar implementation for every count from 0 to 70 and for some larger counts, at
    /// every offset of the destination within a vector register.
    template <typename Source, typename Target, typename... Factor>
    void ExpectAsScalarAtEveryPlace(void (*Implementation::*routine)(unsigned int, const Source*, Target*,
                                                                     Factor...),
                                    Factor... factor) {
        std::vector<Source> source(329 + 16 / sizeof(Source));
        std::iota(source.begin(), source.end(), Source(3));
        for (unsigned int count = 0; count <= 329; count += count < 70 ? 1 : 37)
            for (std::size_t from = 0; from < 16 / sizeof(Source); ++from)
                for (std::size_t to = 0; to < 64 / sizeof(Target); ++to) {
                    std::vector<Target> expected = guarded<Target>(329 + 2 * 64 / sizeof(Target)),
                                        actual = expected;
                    (IPP::kScalarImplementation.*routine)(count, &source[from], &expected[to], factor...);
                    (GetParam()->*routine)(count, &source[from], &actual[to], factor...);
                    ASSERT_TRUE(sameBytes(actual, expected)) << count << " from " << from << " to " << to;
                }
    }
};

std::vector<const Implementation*> implementationsUpTo(const Implementation* end) {
    std::vector<const Implementation*> implementations;
    for (const Implementation* const* implementation = IPP::kAllImplementations; *implementation != end;
         ++implementation)
        implementations.push_back(*implementation);
    return implementations;
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(WideImplementation);
INSTANTIATE_TEST_SUITE_P(IPP, WideImplementation,
                         testing::ValuesIn(implementationsUpTo(&IPP::kScalarImplementation)),
                         [](const auto& test) { return test.param->name; });

TEST_P(WideImplementation, WritesExactlyItsElementsAtEveryCountAndOffset) {
    ExpectAsScalarAtEveryPlace(&Implementation::charToFloat);
    ExpectAsScalarAtEveryPlace(&Implementation::floatToDouble);
    ExpectAsScalarAtEveryPlace(&Implementation::doubleToFloat);
    ExpectAsScalarAtEveryPlace(&Implementation::shortToFloat, 0.5f);
    ExpectAsScalarAtEveryPlace(&Implementation::shortToDouble, 0.5);
    ExpectAsScalarAtEveryPlace(&Implementation::intToFloat, 0.5f);
    ExpectAsScalarAtEveryPlace(&Implementation::intToDouble, 0.5);
    ExpectAsScalarAtEveryPlace(&Implementation::floatToShort, 0.5f);
    ExpectAsScalarAtEveryPlace(&Implementation::floatToShortRounded, 0.5f);
    ExpectAsScalarAtEveryPlace(&Implementation::floatToInt, 0.5f);
    ExpectAsScalarAtEveryPlace(&Implementation::floatToIntRounded, 0.5f);
}

TEST_P(WideImplementation, AgreesOnEverySixteenBitValue) {
    std::vector<short> shorts(65536);
    std::vector<float> around, patterns;
    for (int i = -32768; i < 32768; ++i) {
        const float value = static_cast<float>(i);
        shorts[static_cast<std::size_t>(i + 32768)] = static_cast<short>(i);
        for (float part : {0.0f, 0.25f, 0.49999997f, 0.5f, 0.75f}) around.push_back(value + part);
        // Every exponent with both signs, and NaN.
        const unsigned int bits = static_cast<unsigned int>(i + 32768) << 16;
        patterns.emplace_back();
        std::memcpy(&patterns.back(), &bits, sizeof bits);
    }
    for (int shift = 0; shift < 32; ++shift) {
        const float factor = shift == 31 ? -2147483648.0f : std::ldexp(1.0f, shift);
        SCOPED_TRACE(factor);
        EXPECT_TRUE(AsScalar(&Implementation::shortToFloat, shorts, 1 / factor));
        EXPECT_TRUE(AsScalar(&Implementation::shortToDouble, shorts, 1.0 / factor));
        for (const std::vector<float>* floats : {&around, &patterns}) {
            EXPECT_TRUE(AsScalar(&Implementation::floatToShort, *floats, factor));
            EXPECT_TRUE(AsScalar(&Implementation::floatToShortRounded, *floats, factor));
        }
    }
    for (int exponent = -150; exponent <= 128; ++exponent) { // factors from 0 to infinity
        const float factor = std::ldexp(1.0f, exponent);
        SCOPED_TRACE(exponent);
        ASSERT_TRUE(AsScalar(&Implementation::floatToInt, patterns, factor));
        ASSERT_TRUE(AsScalar(&Implementation::floatToIntRounded, patterns, factor));
    }
    EXPECT_TRUE(AsScalar(&Implementation::floatToIntRounded, around, 1.0f));
    EXPECT_TRUE(AsScalar(&Implementation::floatToDouble, patterns));
}

TEST_P(WideImplementation, AgreesOnRoundedSumsProductsAndConversions) {
    std::vector<float> floats = {0.49999997f,   8388607.5f,      8388609.0f, 16777215.0f, 2147483520.0f,
                                 2147483648.0f, 32767.4980f,     32767.5f,   32768.5f,    kDenormal,
                                 3 * kDenormal, 1.17549421e-38f, FLT_MAX,    kInfinity,   0.0f,
                                 1.0f,          4.2949673e9f,    -kNan};
    std::vector<int> ints = {0, 1, 16777217, 33554435, 2147483583, 2147483584, INT_MAX, INT_MIN, INT_MIN + 1};
    std::vector<double> doubles = {1.0000000596046448,
                                   3.4028235677973366e38,
                                   3.4028235677973362e38,
                                   1e300,
                                   1e-300,
                                   7.0064923216240854e-46,
                                   7.1e-46,
                                   1.1754943157898259e-38,
                                   kInfinity,
                                   kNan,
                                   0.0};
    for (std::size_t i = 0, size = floats.size(); i < size; ++i) floats.push_back(-floats[i]);
    for (std::size_t i = 0, size = doubles.size(); i < size; ++i) doubles.push_back(-doubles[i]);
    EXPECT_TRUE(AsScalar(&Implementation::doubleToFloat, doubles));
    for (int exponent = -1075; exponent <= 1024; ++exponent) {
        const float factor = std::ldexp(1.0f, exponent);
        SCOPED_TRACE(exponent);
        ASSERT_TRUE(AsScalar(&Implementation::floatToInt, floats, factor));
        ASSERT_TRUE(AsScalar(&Implementation::floatToIntRounded, floats, factor));
        ASSERT_TRUE(AsScalar(&Implementation::intToFloat, ints, factor));
        ASSERT_TRUE(AsScalar(&Implementation::intToDouble, ints, std::ldexp(1.0, exponent)));
    }
}

TEST_P(WideImplementation, AgreesOnArraysTooLargeForTheCaches) {
    std::vector<unsigned char> bytes((24u << 20) / 5 + 100, 7);
    bytes[bytes.size() - 3] = 9;
    EXPECT_TRUE(
        AsScalar(&Implementation::charToFloat, bytes)); // AsScalar misaligns the destination by one element
    const std::vector<float> floats(bytes.begin(), bytes.end());
    EXPECT_TRUE(AsScalar(&Implementation::floatToShortRounded, floats, 1.0f));
    EXPECT_TRUE(AsScalar(&Implementation::floatToDouble, floats));
    EXPECT_TRUE(AsScalar(&Implementation::doubleToFloat, std::vector<double>(bytes.begin(), bytes.end())));
    EXPECT_TRUE(
        AsScalar(&Implementation::shortToDouble, std::vector<short>(bytes.begin(), bytes.end()), 0.5));
}

void expectFillsWholeElements(const Implementation& implementation, std::size_t element) {
    for (std::size_t count = 0; count <= 70; ++count)
        for (std::size_t start = 0; start < 32; start += element) {
            std::vector<unsigned char> bytes = guarded<unsigned char>(70 * 8 + 64), expected = bytes;
            unsigned char pattern[8];
            for (std::size_t i = 0; i < 8; ++i) pattern[i] = static_cast<unsigned char>(1 + i % element);
            for (std::size_t i = 0; i < count * element; ++i) expected[start + i] = pattern[i % element];
            implementation.fill(count * element, &bytes[start], pattern);
            ASSERT_TRUE(sameBytes(bytes, expected)) << count << " of " << element << " at " << start;
        }
}

TEST(IPPImplementations, FillLargeArraysEqually) {
    const unsigned char patterns[][8] = {{1, 2, 1, 2, 1, 2, 1, 2},
                                         {1, 2, 3, 4, 1, 2, 3, 4},
                                         {1, 2, 3, 4, 5, 6, 7, 8},
                                         {1, 2, 3, 1, 5, 1, 2, 3},
                                         {2, 0, 0, 0, 1, 0, 0, 0}};
    constexpr std::size_t most = (1 << 20) + 16;
    for (const Implementation* implementation : implementationsUpTo(nullptr))
        for (const auto& pattern : patterns)
            for (const std::size_t count : {most - 24, most - 16, most - 14, most - 8}) {
                const bool isWide = std::memcmp(pattern, pattern + 4, 4) != 0;
                if (!implementation->isSupported() || (isWide && count % 8 != 0)) continue;
                std::vector<unsigned char> bytes = guarded<unsigned char>(most), expected = bytes;
                for (std::size_t i = 0; i < count; ++i) expected[2 + i] = pattern[i % 8];
                implementation->fill(count, &bytes[2], pattern);
                ASSERT_TRUE(sameBytes(bytes, expected)) << implementation->name << " " << count;
            }
}

TEST(IPPImplementations, FillWholeElementsOnly) {
    for (const Implementation* implementation : implementationsUpTo(nullptr)) {
        SCOPED_TRACE(implementation->name);
        for (std::size_t element : {2u, 4u, 8u})
            if (implementation->isSupported()) expectFillsWholeElements(*implementation, element);
    }
}

// The results of the routines, with literals.

template <typename Target, typename Source, typename... Arguments>
Target converted(Source value, Arguments... arguments) {
    Target result = Target(77);
    IPP::Convert(1, &value, &result, arguments...);
    return result;
}

template <typename T>
unsigned long long bitsOf(T value) {
    unsigned long long bits = 0;
    std::memcpy(&bits, &value, sizeof value);
    return bits;
}

TEST(Convert, RoundsFloatsToShorts) {
    const struct {
        float value;
        int scale;
        bool round;
        int expected;
    } rows[] = {
        // value, scale, round, expected
        {1.5f, 0, true, 2},
        {-1.5f, 0, true, -2},
        {2.4f, 0, true, 2},
        {-0.0f, 0, true, 0},
        {0.49999997f, 0, true, 1},
        {32767.5f, 0, true, 32767},
        {40000.0f, 0, true, 32767},
        {-40000.0f, 0, true, -32768},
        {kNan, 0, true, -32768},
        {3.0e9f, 0, true, -32768},
        {kInfinity, 0, false, -32768},
        {2147483520.0f, 0, false, 32767},
        {1.9f, 0, false, 1},
        {-1.9f, 0, false, -1},
        {0.75f, -1, false, 1},
        {-1.0f, -31, false, -32768},
        {0.5f / 65536, 1, true, -16383},
        {-0.5f / 65536, 1, true, 16383},
        {3.0f, 32, false, 3},
        {3.0f, -32, false, 3},
        {0.5f / 65536, 2, false, 8192},
        {5.0f, INT_MIN, false, 5},
        {-5.0f, INT_MAX, false, -10},
    };
    for (const auto& row : rows)
        EXPECT_EQ(converted<short>(row.value, row.scale, row.round), row.expected)
            << row.value << " " << row.scale;
}

TEST(Convert, RoundsFloatsToInts) {
    const struct {
        float value;
        int scale;
        bool round;
        int expected;
    } rows[] = {
        // value, scale, round, expected
        {2147483520.0f, 0, true, 2147483520},
        {2147483648.0f, 0, false, INT_MIN},
        {-2147483648.0f, 0, true, INT_MIN},
        {kNan, 0, true, INT_MIN},
        {kNan, 3, false, INT_MIN},
        {-2.5f, 0, true, -3},
        {8388609.0f, 0, true, 8388610},
        {8388609.0f, 0, false, 8388609},
        {5.0f, 1, true, 3},
        {5.0f, 1, false, 2},
        {1.0f, -31, false, INT_MIN},
        {-3.0e9f, 1, false, -1500000000},
        {1.0f, INT_MIN, false, INT_MIN},
        {0.0f, INT_MIN, false, INT_MIN},
        {1e30f, INT_MAX, true, 0},
        {kInfinity, INT_MAX, true, INT_MIN},
        {FLT_MAX, 127, true, 2},
        {kDenormal, -149, false, INT_MIN},
        {kDenormal, -127, true, 0},
    };
    for (const auto& row : rows)
        EXPECT_EQ(converted<int>(row.value, row.scale, row.round), row.expected)
            << row.value << " " << row.scale;
}

TEST(Convert, DividesIntegersByPowersOfTwo) {
    EXPECT_EQ(converted<float>(short(3), 1), 1.5f);
    EXPECT_EQ(converted<float>(short(3), 33), 1.5f);
    EXPECT_EQ(converted<double>(short(-32768), 15), -1.0);
    EXPECT_EQ(converted<float>(short(1), -1), -1 / 2147483648.0f);
    EXPECT_EQ(converted<double>(short(1), 31), -1 / 2147483648.0);
    EXPECT_EQ(bitsOf(converted<float>(short(0), 31)), 0x80000000u); // 0 divided by a negative number
    EXPECT_EQ(converted<float>(short(7), INT_MIN), 7.0f);
    EXPECT_EQ(converted<float>(3, -2), 12.0f);
    EXPECT_EQ(converted<float>(16777217, 0), 16777216.0f);
    EXPECT_EQ(converted<double>(INT_MIN, 31), -1.0);
    EXPECT_EQ(converted<float>(3, 149), 3 * kDenormal);
    EXPECT_EQ(converted<float>(INT_MAX, 150), 0.0f); // the factor is 0
    EXPECT_EQ(converted<float>(-1, INT_MIN), -kInfinity);
    EXPECT_TRUE(std::isnan(converted<double>(0, -1024))); // 0 times infinity
    EXPECT_EQ(converted<double>(1, 1074), 5e-324);
    EXPECT_EQ(converted<double>(INT_MAX, INT_MAX), 0.0);
}

TEST(Convert, ChangesFloatingPointWidth) {
    EXPECT_EQ(converted<float>(static_cast<unsigned char>(255)), 255.0f);
    EXPECT_EQ(converted<double>(0.1f), 0.10000000149011612);
    EXPECT_EQ(converted<float>(0.1), 0.1f);
    EXPECT_EQ(converted<float>(-1e39), -kInfinity);
    EXPECT_EQ(bitsOf(converted<float>(-1e-60)), 0x80000000u);
}

TEST(Convert, TwoConversionsDoNothing) {
    EXPECT_EQ(converted<unsigned char>(1.0f, 0, true), 77);
    EXPECT_EQ(converted<int>(1.0, 0, false), 77);
}

TEST(IPP, SetStoresZeroBytesForNegativeZero) {
    float floats[3] = {1, 1, 1};
    double doubles[2] = {1, 1};
    IPP::Set(2, floats, -0.0f);
    IPP::Set(1, doubles, -0.0);
    EXPECT_EQ(bitsOf(floats[1]), 0u);
    EXPECT_EQ(floats[2], 1.0f);
    EXPECT_EQ(bitsOf(doubles[0]), 0u);
    EXPECT_EQ(doubles[1], 1.0);
}

TEST(IPP, SetRepeatsTheElement) {
    std::vector<short> shorts(5);
    std::vector<double> doubles(3);
    std::vector<unsigned char> bytes(3);
    IPP::Set(5, shorts.data(), short(-2));
    IPP::Set(3, doubles.data(), 0.1);
    IPP::Set(2, bytes.data(), static_cast<unsigned char>(200));
    EXPECT_THAT(shorts, testing::Each(-2));
    EXPECT_THAT(doubles, testing::Each(0.1));
    EXPECT_THAT(bytes, testing::ElementsAre(200, 200, 0));
}

TEST(IPP, BlockOperationsCountInElements) {
    std::vector<double> numbers = {1, 2, 3, 4, 5};
    IPP::Move(3, &numbers[0], &numbers[1]);
    EXPECT_THAT(numbers, testing::ElementsAre(1, 1, 2, 3, 5));
    IPP::Copy(2, &numbers[3], &numbers[0]);
    IPP::Zero(2, &numbers[2]);
    EXPECT_THAT(numbers, testing::ElementsAre(3, 5, 0, 0, 5));
    unsigned char a[] = {1, 2, 3};
    const unsigned char b[] = {1, 2, 4};
    EXPECT_TRUE(IPP::Equal(2, a, b));
    EXPECT_FALSE(IPP::Equal(3, a, b));
    EXPECT_FALSE(IPP::Equal(1, &a[2], &b[2]));
    IPP::Move(2, &a[0], &a[1]);
    EXPECT_THAT(a, testing::ElementsAre(1, 1, 2));
    float reals[] = {1, 2, 3};
    IPP::Move(2, &reals[0], &reals[1]);
    EXPECT_THAT(reals, testing::ElementsAre(1, 1, 2));
    short shorts[] = {1, 2, 3};
    IPP::Move(2, &shorts[1], &shorts[0]);
    EXPECT_THAT(shorts, testing::ElementsAre(2, 3, 3));
}

TEST(IPP, AcceptsNullForNoElements) {
    float real = 1;
    short narrow = 2;
    int whole = 3;
    unsigned char byte = 4;
    double wide = 5;
    IPP::Copy(0, static_cast<const float*>(nullptr), &real);
    IPP::Move(0, static_cast<const short*>(nullptr), &narrow);
    IPP::Set(0, &whole, 9);
    IPP::Set(0, &byte, static_cast<unsigned char>(9));
    IPP::Zero(0, &wide);
    IPP::Convert(0, static_cast<const short*>(nullptr), &real, 0);
    EXPECT_EQ(std::make_tuple(real, narrow, whole, byte, wide), std::make_tuple(1.0f, 2, 3, 4, 5.0));
    EXPECT_TRUE(IPP::Equal(0, nullptr, nullptr));
    IPP::Copy(0, &real, static_cast<float*>(nullptr)); // a sanitizer reports the use of a null pointer
    IPP::Move(0, &narrow, static_cast<short*>(nullptr));
    IPP::Set(0, static_cast<int*>(nullptr), 9);
    IPP::Zero(0, static_cast<double*>(nullptr));
}

TEST(RoundToInt, RoundsHalfAwayFromZero) {
    const std::pair<float, int> rows[] = {{0.5f, 1}, {-0.5f, -1}, {2.49f, 2}, {-2.5f, -3}, {3e9f, INT_MIN}};
    for (const auto& [real, rounded] : rows) EXPECT_EQ(Util::RoundToInt(real), rounded) << real;
}

TEST(PowerOfTwo, IsExactFromZeroToInfinity) {
    for (int exponent = -1100; exponent <= 1100; ++exponent) {
        ASSERT_EQ(bitsOf(Util::PowerOfTwo(exponent)), bitsOf(std::ldexp(1.0f, exponent))) << exponent;
        ASSERT_EQ(bitsOf(Util::PowerOfTwoDouble(exponent)), bitsOf(std::ldexp(1.0, exponent))) << exponent;
    }
    EXPECT_EQ(Util::PowerOfTwo(LLONG_MIN), 0.0f);
    EXPECT_EQ(Util::PowerOfTwoDouble(LLONG_MAX), static_cast<double>(kInfinity));
}

} // namespace
