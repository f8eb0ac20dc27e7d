#include <Kelbase/common/common_string.h>

#include <Kelbase/common/common_string_decimal.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

char localeDecimalPoint() {
    const lconv* const locale = std::localeconv();
    const char* const point = locale ? locale->decimal_point : nullptr;
    return point && *point ? *point : '.';
}

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
    const char decimalPoint = localeDecimalPoint();
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

/// For a base up to 36: above it, bytes that are no letters would count.
bool checkCharInBase(const Char& c, unsigned int base) {
    const char byte = c;
    if (base <= 10) return c.IsDigit() && static_cast<unsigned int>(byte - '0') < base;
    const int letters = static_cast<int>(base - 10);
    return c.IsDigit() || (byte > 0x60 && byte < 'a' + letters) || (byte >= 0x41 && byte < 'A' + letters);
}

unsigned int digitValue(char c) {
    if (c >= '0' && c <= '9') return static_cast<unsigned int>(c - '0');
    return static_cast<unsigned int>(c >= 'a' && c <= 'z' ? c - 87 : c - 55);
}

template <typename U>
U scanUInt(const char*& p, unsigned int& remaining, unsigned int base, bool& ok) {
    constexpr U largest = std::numeric_limits<U>::max();
    const U max = static_cast<U>(largest / base);
    const U maxDigit = static_cast<U>(largest % base);
    U value = 0;
    for (; remaining > 0 && checkCharInBase(*p, base); ++p, --remaining) {
        const unsigned int digit = digitValue(*p);
        if (value > max || (value == max && digit > maxDigit)) {
            ok = false;
            return 0;
        }
        value = static_cast<U>(value * base + digit);
    }
    ok = true;
    return value;
}

void skipSpace(const char*& p, unsigned int& remaining) {
    for (; remaining > 0 && Char(*p).IsSpace(); ++p) --remaining;
}

/// Sign, digits and nothing else but white space around them. `minus` is null where "-" is no sign.
template <typename U>
bool parseMagnitude(const String& s, unsigned int base, U& magnitude, bool* minus) {
    if (base > 36) return false;
    const String t = normalizeNumberString(s);
    const char* p = t.Latin1();
    unsigned int remaining = t.GetLength();
    skipSpace(p, remaining);
    if (remaining > 0 && (*p == '+' || (minus && *p == '-'))) {
        if (minus) *minus = *p == '-';
        ++p;
        --remaining;
    }
    if (remaining == 0 || !checkCharInBase(*p, base)) return false;
    bool fits = false;
    magnitude = scanUInt<U>(p, remaining, base, fits);
    skipSpace(p, remaining);
    return fits && remaining == 0;
}

template <typename U>
U toUInt(bool* ok, unsigned int base, const String& s) {
    if (ok) *ok = false;
    U value = 0;
    if (!parseMagnitude<U>(s, base, value, nullptr)) return 0;
    if (ok) *ok = true;
    return value;
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
    if (ok) *ok = false;
    U magnitude = 0;
    bool minus = false;
    if (!parseMagnitude<U>(s, base, magnitude, &minus)) return 0;
    bool good = false;
    const S value = fromMagnitude(magnitude, minus, good);
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

double String::ToDouble(bool* ok) const {
    if (ok) *ok = false;
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
