#include <Kelbase/common/detail/common_string_float_text.h>

#include <Kelbase/common/detail/common_string_digits.h>
#include <Kelbase/common/detail/common_string_locale.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#if __has_include(<charconv>)
#include <charconv>
#endif

namespace {

constexpr unsigned int kDefaultPrecision = 6;
constexpr unsigned int kPowersOfTen[] = {1,      10,      100,      1000,      10000,
                                         100000, 1000000, 10000000, 100000000, 1000000000};

char letterOf(const checked_value<unsigned int>& format) {
    if (!format.IsGiven()) return 'f';
    for (const char known : {'F', 'e', 'E', 'g', 'G'}) {
        if (format == static_cast<unsigned int>(known)) return known;
    }
    return 'f';
}

/// A number from 0 to less than 2^63 with a binary fraction of 128 bits.
///
/// The fraction is exact for numbers from 2^-76. A smaller number is stored as 0. This error changes no
/// digit, because the first nine decimals of such a number are zeros.
class FixedPoint {
public:
    explicit FixedPoint(double v) {
        static_assert(std::numeric_limits<double>::is_iec559 && sizeof v == sizeof(std::uint64_t));
        std::uint64_t bits;
        std::memcpy(&bits, &v, sizeof bits);
        const int exponent = static_cast<int>(bits >> 52) - 1023;
        const std::uint64_t significand = (bits & ((1ull << 52) - 1)) | 1ull << 52;
        if (exponent >= 52) {
            whole = significand << (exponent - 52);
        } else if (exponent >= 0) {
            whole = significand >> (52 - exponent);
            upper = significand << (12 + exponent);
        } else if (exponent >= -12) {
            upper = significand << (12 + exponent);
        } else if (exponent > -76) {
            upper = significand >> (-12 - exponent);
            lower = significand << (76 + exponent);
        }
    }

    /// Rounds the number to a multiple of 1 / `power`, half to even. Returns the fraction as a multiple of 1
    /// / `power`. `Whole` then returns the integer part.
    unsigned int RoundToParts(unsigned int power) {
        const Product low = Times(lower, power), high = Times(upper, power);
        const std::uint64_t rest = high.low + low.high;
        unsigned int parts = high.high + (rest < high.low);
        constexpr std::uint64_t half = 1ull << 63;
        const bool odd = (power == 1 ? whole : parts) % 2 != 0;
        if (rest > half || (rest == half && (low.low != 0 || odd))) ++parts;
        if (parts < power) return parts;
        ++whole;
        return 0;
    }
    std::uint64_t Whole() const { return whole; }

private:
    struct Product {
        std::uint64_t low;
        unsigned int high;
    };
    static Product Times(std::uint64_t a, unsigned int b) {
        const std::uint64_t low = (a & 0xFFFFFFFF) * b;
        const std::uint64_t high = (a >> 32) * b + (low >> 32);
        return {high << 32 | (low & 0xFFFFFFFF), static_cast<unsigned int>(high >> 32)};
    }

    std::uint64_t whole = 0;
    std::uint64_t upper = 0, lower = 0; // the two halves of the fraction
};

} // namespace

FloatText::FloatText(double value, unsigned int precision, const checked_value<unsigned int>& format) {
    const char letter = letterOf(format);
    precision = precision == kNoPrecision ? kDefaultPrecision : std::min(precision, 99u);
    const char* const point = LocaleDecimalPoint();
    if (point[1] == '\0' && std::isfinite(value)) {
        if ((letter == 'f' || letter == 'F') && WriteFixed(value, precision, *point)) return;
        if (letter == 'e' && WriteScientific(value, precision, *point)) return;
    }
    const char pattern[] = {'%', '.', '*', letter, '\0'};
    const int written = std::snprintf(capacity, sizeof capacity, pattern, static_cast<int>(precision), value);
    length = std::min(static_cast<std::size_t>(std::max(written, 0)), sizeof capacity - 1);
}

/// Writes the number with exact integer arithmetic. Returns false for numbers from 2^63 and for
/// more than nine decimals.
bool FloatText::WriteFixed(double value, unsigned int precision, char point) {
    if (std::fabs(value) >= 9223372036854775808.0 || precision >= std::size(kPowersOfTen)) return false;
    FixedPoint number(std::fabs(value));
    const unsigned int parts = number.RoundToParts(kPowersOfTen[precision]);
    char* const end = capacity + sizeof capacity;
    char* p = end;
    if (precision > 0) {
        p = WriteLowDigits(p, parts, precision);
        *--p = point;
    }
    p = WriteDecimal(p, number.Whole());
    if (std::signbit(value)) *--p = '-';
    first = p;
    length = static_cast<std::size_t>(end - p);
    return true;
}

/// Writes the number with the C++ library, whose result differs from that of the C library only in the
/// decimal separator. Returns false if the C++ library has no such function.
bool FloatText::WriteScientific([[maybe_unused]] double value, [[maybe_unused]] unsigned int precision,
                                [[maybe_unused]] char point) {
#ifdef __cpp_lib_to_chars
    const std::to_chars_result result =
        std::to_chars(capacity, capacity + sizeof capacity, value, std::chars_format::scientific,
                      static_cast<int>(precision));
    length = static_cast<std::size_t>(result.ptr - capacity);
    if (precision > 0) capacity[std::signbit(value) ? 2 : 1] = point;
    return true;
#else
    return false;
#endif
}
