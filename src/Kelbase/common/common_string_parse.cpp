#include <Kelbase/common/common_string.h>

#include <Kelbase/common/detail/common_string_decimal.h>
#include <Kelbase/common/detail/common_string_locale.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

bool isAscii(const String& s) {
    const char* const bytes = s.Latin1();
    for (unsigned int i = 0; i < s.GetLength(); ++i) {
        if (static_cast<unsigned char>(bytes[i]) >= 0x80) return false;
    }
    return true;
}

unsigned short asciiForm(unsigned short unit, char decimalPoint) {
    if (unit >= 0xFF10 && unit <= 0xFF19) return static_cast<unsigned short>(unit - 0xFF10 + '0');
    switch (unit) {
    case 0xFF0E: // full-width full stop
    case 0x3002: // ideographic full stop
        return static_cast<unsigned char>(decimalPoint);
    case 0xFF0D: // full-width hyphen-minus
    case 0x2212: // minus sign
        return '-';
    default:
        return unit;
    }
}

/// The text with both decimal separators made the locale's, and full-width digits and signs made ASCII. No
/// text when the bytes are no UTF-8.
String normalizeNumberString(const String& s) {
    if (s.GetLength() == 0) return s;
    const char decimalPoint = *localeDecimalPoint();
    String t = s;
    for (const char separator : {'.', ',', g_chDecimalPoint}) {
        if (separator != decimalPoint) t = t.StripWhiteSpace().ReplaceChar(separator, decimalPoint);
    }
    if (isAscii(t)) return t;

    const shared_array<unsigned short> units = t.Unicode(1);
    if (!units) return {};
    for (std::size_t i = 0; units[i] != 0; ++i) units[i] = asciiForm(units[i], decimalPoint);
    return String(units.get(), 1);
}

constexpr unsigned char noDigit = 99;

/// The value that each byte has as a digit of a base up to 36.
constexpr std::array<unsigned char, 256> digitValues = [] {
    std::array<unsigned char, 256> values{};
    for (unsigned char& value : values) value = noDigit;
    for (unsigned char i = 0; i < 10; ++i) values['0' + i] = i;
    for (unsigned char i = 0; i < 26; ++i)
        values['a' + i] = values['A' + i] = static_cast<unsigned char>(10 + i);
    return values;
}();

unsigned int digitValue(char c) { return digitValues[static_cast<unsigned char>(c)]; }

const char* skipSpace(const char* p, const char* end) {
    while (p < end && Char(*p).IsSpace()) ++p;
    return p;
}

/// What a text says an integer is: nothing but white space around a sign and digits.
template <typename U>
struct Integer {
    U magnitude = 0;
    bool minus = false;
    bool isGood = false;
};

/// Reads the digits at `p`, which it moves behind them; what ends them may be the NUL behind the text. False
/// when they make no `U`.
template <typename U>
bool scanUInt(const char*& p, unsigned int base, U& value) {
    constexpr U largest = std::numeric_limits<U>::max();
    unsigned long long sum = 0;
    for (unsigned int digit; (digit = digitValue(*p)) < base; ++p) {
        if constexpr (sizeof(U) < sizeof sum) {
            sum = sum * base + digit;
            if (sum > largest) return false;
        } else {
            if (sum > largest / base || (sum == largest / base && digit > largest % base)) return false;
            sum = sum * base + digit;
        }
    }
    value = static_cast<U>(sum);
    return true;
}

template <typename U>
Integer<U> readInteger(const String& s, unsigned int base, bool minusAllowed) {
    Integer<U> number;
    const char* p = s.Latin1();
    const char* const end = p + s.GetLength();
    if (digitValue(*p) >= base) { // most texts begin with a digit
        p = skipSpace(p, end);
        if (p < end && (*p == '+' || (minusAllowed && *p == '-'))) number.minus = *p++ == '-';
        if (digitValue(*p) >= base) return number;
    }
    number.isGood = scanUInt(p, base, number.magnitude) && (p == end || skipSpace(p, end) == end);
    return number;
}

/// Out of the way of those that most texts take.
template <typename U>
[[gnu::noinline]] Integer<U> readNormalizedInteger(const String& s, unsigned int base, bool minusAllowed) {
    return isAscii(s) ? Integer<U>() : readInteger<U>(normalizeNumberString(s), base, minusAllowed);
}

/// Normalising changes no digit, sign or white space of ASCII: only a text with others is read again.
template <typename U>
Integer<U> parseInteger(const String& s, unsigned int base, bool minusAllowed) {
    if (base > 36) return {};
    const Integer<U> number = readInteger<U>(s, base, minusAllowed);
    return number.isGood ? number : readNormalizedInteger<U>(s, base, minusAllowed);
}

template <typename U>
U toUInt(bool* ok, unsigned int base, const String& s) {
    const Integer<U> number = parseInteger<U>(s, base, false);
    if (ok) *ok = number.isGood;
    return number.isGood ? number.magnitude : 0;
}

// Each width has accepted ranges of its own, which callers have come to rely on.

int fromMagnitude(unsigned int magnitude, bool minus, bool& good) {
    good = magnitude <= 2147483647u + (minus ? 1u : 0u);
    return static_cast<int>(minus ? 0u - magnitude : magnitude);
}

short fromMagnitude(unsigned short magnitude, bool minus, bool& good) {
    good = minus || magnitude <= 32767; // behind "-" any 16 bits are taken, and cut
    return static_cast<short>(minus ? -magnitude : magnitude);
}

long long fromMagnitude(unsigned long long magnitude, bool minus, bool& good) {
    good = magnitude <= (minus ? 0u : 4294967295u); // 32 bits, sign-extended
    return static_cast<int>(static_cast<unsigned int>(magnitude));
}

template <typename U, typename S>
S toInt(bool* ok, unsigned int base, const String& s) {
    const Integer<U> number = parseInteger<U>(s, base, true);
    bool good = number.isGood;
    const S value = good ? fromMagnitude(number.magnitude, number.minus, good) : S{0};
    if (ok) *ok = good;
    return good ? value : S{0};
}

} // namespace

short String::ToShort(bool* ok, unsigned int base) const {
    return toInt<unsigned short, short>(ok, base, *this);
}
unsigned short String::ToUShort(bool* ok, unsigned int base) const {
    return toUInt<unsigned short>(ok, base, *this);
}
int String::ToInt(bool* ok, unsigned int base) const { return toInt<unsigned int, int>(ok, base, *this); }
unsigned int String::ToUInt(bool* ok, unsigned int base) const {
    return toUInt<unsigned int>(ok, base, *this);
}
long long String::ToInt64(bool* ok, unsigned int base) const {
    return toInt<unsigned long long, long long>(ok, base, *this);
}
unsigned long long String::ToUInt64(bool* ok, unsigned int base) const {
    return toUInt<unsigned long long>(ok, base, *this);
}

namespace {

/// A decimal number as it is written in most texts: digits, perhaps a separator among them, perhaps an
/// exponent.
struct PlainDecimal {
    unsigned long long digits = 0;
    int exponent = 0;
    bool minus = false;
};

/// Reads a whole text; false for anything that is not so plain, be it a number or none.
bool readPlain(const char* p, const char* end, PlainDecimal& number) {
    p = skipSpace(p, end);
    if (p < end && (*p == '-' || *p == '+')) number.minus = *p++ == '-';
    int count = 0, behindSeparator = 0;
    bool separated = false;
    for (; p < end; ++p) {
        const unsigned int digit = static_cast<unsigned char>(*p) - unsigned{'0'};
        if (digit < 10) {
            number.digits = number.digits * 10 + digit;
            ++count;
            behindSeparator += separated;
        } else if ((*p == '.' || *p == ',') && !separated) {
            separated = true;
        } else {
            break;
        }
    }
    if (count == 0 || count > 19) return false;
    if (p < end && (*p == 'e' || *p == 'E')) {
        ++p;
        const bool minus = p < end && *p == '-';
        if (p < end && (*p == '-' || *p == '+')) ++p;
        if (p == end || end - p > 3) return false;
        for (unsigned int digit; p < end && (digit = static_cast<unsigned char>(*p) - unsigned{'0'}) < 10;
             ++p)
            number.exponent = number.exponent * 10 + static_cast<int>(digit);
        if (minus) number.exponent = -number.exponent;
    }
    number.exponent -= behindSeparator;
    return skipSpace(p, end) == end;
}

/// The double nearest to the text, where one operation is certain to give it: on a whole number and a power
/// of ten that are doubles themselves.
bool readExactly(const String& s, double& value) {
    static constexpr double powersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                             1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                             1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const char* const point = localeDecimalPoint();
    if ((*point != '.' && *point != ',') || point[1] != '\0' || g_chDecimalPoint != '.') return false;
    PlainDecimal number;
    if (!readPlain(s.Latin1(), s.Latin1() + s.GetLength(), number) || number.digits > 1ull << 53 ||
        number.exponent < -22 || number.exponent > 22)
        return false;
    const double digits = static_cast<double>(number.digits);
    value =
        number.exponent < 0 ? digits / powersOfTen[-number.exponent] : digits * powersOfTen[number.exponent];
    if (number.minus) value = -value;
    return true;
}

} // namespace

double String::ToDouble(bool* ok) const {
    if (ok) *ok = false;
    double exact = 0;
    if (readExactly(*this, exact)) {
        if (ok) *ok = true;
        return exact;
    }
    const String t = normalizeNumberString(*this);
    char* end = nullptr;
    const double value = std::strtod(t.Latin1(), &end);
    if (t.GetLength() == 0 || end != t.Latin1() + t.GetLength()) return 0.0;
    if (ok) *ok = true;
    return value;
}

// What is too large for a float becomes infinite, as IEEE 754 has it, and is not undefined.
static_assert(std::numeric_limits<float>::is_iec559);
float String::ToFloat(bool* ok) const { return static_cast<float>(ToDouble(ok)); }
