#include <Kelbase/common/common_string.h>

#include <Kelbase/common/detail/common_string_decimal.h>
#include <Kelbase/common/detail/common_string_locale.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <limits>

namespace {

bool isAscii(const String& s) {
    const char* const bytes = s.Latin1();
    for (unsigned int i = 0; i < s.GetLength(); ++i) {
        if (static_cast<unsigned char>(bytes[i]) >= 0x80) return false;
    }
    return true;
}

/// Returns the ASCII equivalent of a full-width digit or sign, and `decimalPoint` for a full stop that is not
/// ASCII. Returns every other unit unchanged.
unsigned short toAscii(unsigned short unit, char decimalPoint) {
    if (unit >= 0xFF10 && unit <= 0xFF19) return static_cast<unsigned short>(unit - 0xFF10 + '0');
    switch (unit) {
    case 0xFF0E: // full-width full stop
    case 0x3002: // ideographic full stop
        return static_cast<unsigned char>(decimalPoint);
    case 0xFF0D: // full-width hyphen-minus
    case 0x2212: // minus sign
        return '-';
    default: return unit;
    }
}

/// Replaces ".", "," and `g_chDecimalPoint` by the separator of the locale, and full-width digits and signs
/// by ASCII characters. Returns an empty text if the text is not ASCII and `Unicode` rejects it.
String normalizeNumberString(const String& s) {
    if (s.GetLength() == 0) return s;
    const char decimalPoint = *LocaleDecimalPoint();
    String t = s;
    for (const char separator : {'.', ',', g_chDecimalPoint}) {
        if (separator != decimalPoint) t = t.StripWhiteSpace().ReplaceChar(separator, decimalPoint);
    }
    if (isAscii(t)) return t;

    const shared_array<unsigned short> units = t.Unicode(1);
    if (!units) return {};
    for (std::size_t i = 0; units[i] != 0; ++i) units[i] = toAscii(units[i], decimalPoint);
    return String(units.get(), 1);
}

/// The properties of a byte as a digit.
struct Digit {
    unsigned int rank;  ///< The byte is a digit of every base above this number.
    unsigned int value; ///< The value of the digit.
};

/// The digits, indexed by their bytes. The ASCII characters after "Z" and after "z" are digits of bases above
/// 36. For the characters from "{" on, `rank` is computed from "a", but `value` is computed from "A". Their
/// value can therefore be larger than the base.
constexpr std::array<Digit, 256> kDigits = [] {
    std::array<Digit, 256> digits{};
    for (Digit& digit : digits) digit = {UINT_MAX, 0};
    for (unsigned int c = '0'; c <= '9'; ++c) digits[c] = {c - '0', c - '0'};
    for (unsigned int c = 'A'; c < 'a'; ++c) digits[c] = {c - 'A' + 10, c - 'A' + 10};
    for (unsigned int c = 'a'; c <= 'z'; ++c) digits[c] = {c - 'a' + 10, c - 'a' + 10};
    for (unsigned int c = 'z' + 1; c < 0x80; ++c) digits[c] = {c - 'a' + 10, c - 'A' + 10};
    return digits;
}();

const Digit& digitOf(const Char& c) { return kDigits[static_cast<unsigned char>(c)]; }

bool checkCharInBase(const Char& c, unsigned int base) { return digitOf(c).rank < base; }

const char* skipSpace(const char* p, const char* end) {
    while (p < end && Char(*p).IsSpace()) ++p;
    return p;
}

/// The result of parsing an integer.
template <typename U>
struct Integer {
    U magnitude = 0;
    bool minus = false;
    bool isGood = false;
};

/// Parses the digits at `p` and moves `p` past the last digit. A byte that is not a digit, for example a NUL,
/// must end the digits. Returns false if the number is larger than the largest `U`.
template <typename U>
bool scanUInt(const char*& p, unsigned int base, U& value) {
    constexpr U largest = std::numeric_limits<U>::max();
    unsigned long long sum = 0;
    for (; checkCharInBase(*p, base); ++p) {
        const unsigned int digit = digitOf(*p).value;
        if constexpr (sizeof(U) < sizeof sum) { // the product of two 32-bit numbers and a digit fit 64 bits
            sum = sum * base + digit;
            if (sum > largest) return false;
        } else {
            if (sum > largest / base || digit > largest - sum * base) return false;
            sum = sum * base + digit;
        }
    }
    value = static_cast<U>(sum);
    return true;
}

/// Parses white space, a sign, digits and white space, in this order. Only the digits are required.
template <typename U>
Integer<U> readInteger(const String& s, unsigned int base, bool minusAllowed) {
    Integer<U> number;
    const char* p = s.Latin1();
    const char* const end = p + s.GetLength();
    if (!checkCharInBase(*p, base)) { // most texts begin with a digit
        p = skipSpace(p, end);
        if (p < end && (*p == '+' || (minusAllowed && *p == '-'))) number.minus = *p++ == '-';
        if (!checkCharInBase(*p, base)) return number;
    }
    number.isGood = scanUInt(p, base, number.magnitude) && skipSpace(p, end) == end;
    return number;
}

/// Parses the normalized text. The function is not inlined, because few texts need the normalization.
template <typename U>
[[gnu::noinline]] Integer<U> readNormalizedInteger(const String& s, unsigned int base, bool minusAllowed) {
    return isAscii(s) ? Integer<U>() : readInteger<U>(normalizeNumberString(s), base, minusAllowed);
}

/// Parses the text, and then the normalized text if the first attempt fails. The normalization does not
/// change ASCII digits, signs and white space. An ASCII text is therefore parsed only once.
template <typename U>
Integer<U> parseInteger(const String& s, unsigned int base, bool minusAllowed) {
    const Integer<U> number = readInteger<U>(s, base, minusAllowed);
    return number.isGood ? number : readNormalizedInteger<U>(s, base, minusAllowed);
}

template <typename U>
U toUInt(bool* ok, unsigned int base, const String& s) {
    const Integer<U> number = parseInteger<U>(s, base, false);
    if (ok) *ok = number.isGood;
    return number.isGood ? number.magnitude : 0;
}

// These functions apply the sign and set `good` to whether the type accepts the number. The ranges differ
// from the ranges of the types on purpose: callers rely on them.

int fromMagnitude(unsigned int magnitude, bool minus, bool& good) {
    good = magnitude <= 2147483647u + (minus ? 1u : 0u);
    return static_cast<int>(minus ? 0u - magnitude : magnitude);
}

short fromMagnitude(unsigned short magnitude, bool minus, bool& good) {
    good = minus || magnitude <= 32767; // after "-" every 16-bit magnitude is accepted
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

/// A decimal number with few digits: `digits` times 10 to the power of `exponent`, negated if `minus` is
/// true.
struct ShortDecimal {
    unsigned long long digits = 0;
    int exponent = 0;
    bool minus = false;
};

bool isDecimalDigit(char c) { return c >= '0' && c <= '9'; }

/// Moves `p` past a sign, if there is one. Returns whether the sign is a minus.
bool readSign(const char*& p) {
    if (*p != '-' && *p != '+') return false;
    return *p++ == '-';
}

/// Appends the digits at `p` to `number` and moves `p` past them. Returns the number of digits. `number`
/// wraps around if it becomes too large.
std::ptrdiff_t readDigits(const char*& p, unsigned long long& number) {
    const char* const first = p;
    for (; isDecimalDigit(*p); ++p) number = number * 10 + static_cast<unsigned int>(*p - '0');
    return p - first;
}

/// Parses digits with at most one separator. Returns false for no digits and for more than 19 digits. 64 bits
/// can store every number of 19 digits.
bool readMantissa(const char*& p, ShortDecimal& number) {
    std::ptrdiff_t count = readDigits(p, number.digits);
    if (*p == '.' || *p == ',') {
        const std::ptrdiff_t fraction = readDigits(++p, number.digits);
        number.exponent = -static_cast<int>(std::min<std::ptrdiff_t>(fraction, 20));
        count += fraction;
    }
    return count > 0 && count <= std::numeric_limits<unsigned long long>::digits10;
}

/// Parses an optional exponent. Returns false if the exponent does not have one to three digits.
bool readExponent(const char*& p, ShortDecimal& number) {
    if (*p != 'e' && *p != 'E') return true;
    ++p;
    const bool minus = readSign(p);
    unsigned long long exponent = 0;
    const std::ptrdiff_t count = readDigits(p, exponent);
    if (count < 1 || count > 3) return false;
    number.exponent += minus ? -static_cast<int>(exponent) : static_cast<int>(exponent);
    return true;
}

/// Parses a decimal number with optional white space around it. `*end` must be NUL. Returns false for any
/// other text, for example "inf".
bool readShortDecimal(const char* p, const char* end, ShortDecimal& number) {
    p = skipSpace(p, end);
    number.minus = readSign(p);
    return readMantissa(p, number) && readExponent(p, number) && skipSpace(p, end) == end;
}

/// The powers of ten that a double represents exactly.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kLargestPower = static_cast<int>(std::size(kPowersOfTen)) - 1;
constexpr unsigned long long kLargestExactInteger = 1ull << std::numeric_limits<double>::digits;

/// Returns whether "." and "," are the only decimal separators: the locale uses one of them, and
/// `g_chDecimalPoint` is ".".
bool isUsualLocale() {
    const char* const point = LocaleDecimalPoint();
    return (*point == '.' || *point == ',') && point[1] == '\0' && g_chDecimalPoint == '.';
}

/// Parses a number that is the product or the quotient of an exact integer and an exact power of ten. The
/// only rounding is that of the product or quotient, so the result is the same as that of `strtod`. Returns
/// false for every other text.
bool readExactly(const String& s, double& value) {
    if (!isUsualLocale()) return false;
    ShortDecimal number;
    if (!readShortDecimal(s.Latin1(), s.Latin1() + s.GetLength(), number)) return false;
    if (number.digits > kLargestExactInteger) return false;
    if (number.exponent < -kLargestPower || number.exponent > kLargestPower) return false;
    const double magnitude = static_cast<double>(number.digits);
    const double digits = number.minus ? -magnitude : magnitude;
    value = number.exponent < 0 ? digits / kPowersOfTen[-number.exponent]
                                : digits * kPowersOfTen[number.exponent];
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

// With IEEE 754 numbers, the conversion of a double that is too large for a float is defined. The result is
// infinite.
static_assert(std::numeric_limits<float>::is_iec559);
float String::ToFloat(bool* ok) const { return static_cast<float>(ToDouble(ok)); }
