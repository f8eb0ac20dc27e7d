#include <Kelbase/common/common_string.h>

#include <Kelbase/common/common_string_builder.h>
#include <Kelbase/common/common_string_decimal.h>
#include <Kelbase/common/common_string_length.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <string>
#include <utility>

char g_chDecimalPoint = '.';

namespace {

using Width = checked_value<unsigned int>;

constexpr char digitAlphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr unsigned int noPrecision = 0xFFFFFFFF;

unsigned int usableBase(unsigned int base) { return base < 2 || base > 36 ? 10 : base; }

/// The digits of a number, "0" before them up to `width` and the sign before all.
std::string formatMagnitude(unsigned long long v, bool minus, unsigned int base, const Width& width) {
    char digits[sizeof v * CHAR_BIT];
    char* const end = digits + sizeof digits;
    char* first = end;
    do {
        *--first = digitAlphabet[v % base];
        v /= base;
    } while (v != 0);
    const auto count = end - first;
    const unsigned long long padded = std::max<unsigned long long>(width, static_cast<std::size_t>(count));
    std::string text(checkedLength(padded + minus), '0');
    if (minus) text.front() = '-';
    std::copy(first, end, text.end() - count);
    return text;
}

std::string formatInteger(unsigned int v, unsigned int base, const Width& width) {
    return formatMagnitude(v, false, usableBase(base), width);
}

std::string formatInteger(int v, unsigned int base, const Width& width) {
    base = usableBase(base);
    const unsigned int magnitude = v < 0 ? 0u - static_cast<unsigned int>(v) : static_cast<unsigned int>(v);
    if (v != INT_MIN) return formatMagnitude(magnitude, v < 0, base, width);
    // The one value without a positive twin is written in two pieces, and a width pads each.
    checkedLength(2ull * width + 1);
    return formatMagnitude(magnitude / base, true, base, width)
        .append(formatMagnitude(magnitude % base, false, base, width));
}

std::string formatInteger(unsigned long long v, unsigned int base, const Width& width) {
    return formatMagnitude(v, false, base == 16 ? 16 : 10, width);
}

std::string formatInteger(long long v, unsigned int base, const Width& width) {
    const auto bits = static_cast<unsigned long long>(v);
    return v < 0 && base != 16 ? formatMagnitude(0 - bits, true, 10, width)
                               : formatInteger(bits, base, width);
}

// A `long` counts as 32 bits wide wherever its value fits them; a wider one is written whole.

bool fitsInt(long v) { return v >= INT_MIN && v <= INT_MAX; }

std::string formatInteger(unsigned long v, unsigned int base, const Width& width) {
    return formatMagnitude(v, false, usableBase(base), width);
}

std::string formatInteger(long v, unsigned int base, const Width& width) {
    if (fitsInt(v)) return formatInteger(static_cast<int>(v), base, width);
    const auto bits = static_cast<unsigned long>(v);
    return formatMagnitude(v < 0 ? 0 - bits : bits, v < 0, usableBase(base), width);
}

String formatFloat(double value, unsigned int precision, const checked_value<unsigned int>& format) {
    char letter = 'f';
    for (const char known : {'F', 'e', 'E', 'g', 'G'}) {
        if (format.IsGiven() && format == static_cast<unsigned int>(known)) letter = known;
    }
    char text[1024] = "";
    if (precision == noPrecision) {
        const char pattern[] = {'%', letter, '\0'};
        static_cast<void>(std::snprintf(text, sizeof text, pattern, value));
    } else {
        const char pattern[] = {'%', '.', '*', letter, '\0'};
        const int digits = precision < 99 ? static_cast<int>(precision) : 99;
        static_cast<void>(std::snprintf(text, sizeof text, pattern, digits, value));
    }
    if (g_chDecimalPoint == '.') return String(text);
    return String(text).StripWhiteSpace().ReplaceChar('.', g_chDecimalPoint);
}

/// Position of the placeholder to fill: the lowest digit, and of equal ones the first.
checked_value<unsigned int> findPlaceholder(const char* s, unsigned int length) {
    checked_value<unsigned int> best;
    char lowest = '9' + 1;
    for (unsigned int i = 0; i + 1 < length && lowest > '0'; ++i) {
        if (s[i] == '%' && s[i + 1] >= '0' && s[i + 1] < lowest) {
            lowest = s[i + 1];
            best = i;
        }
    }
    return best;
}

} // namespace

String String::Arg(const String& a) const {
    const auto place = findPlaceholder(Latin1(), GetLength());
    if (!place.IsGiven()) return *this + a;
    const std::string_view bytes = Bytes();
    StringBuilder filled(bytes.size() - 2ull + a.GetLength());
    return filled.Add(bytes.substr(0, place))
        .Add(a.Bytes())
        .Add(bytes.substr(place + std::size_t{2}))
        .Finish();
}

String String::Arg(char c) const { return Arg(String(c)); }
String String::Arg(const Char& c) const { return Arg(String(static_cast<char>(c))); }

String String::Arg(int v, unsigned int base, const Width& width) const {
    return base == 16 ? Arg(static_cast<unsigned int>(v), base, width) : Arg(Number(v, base, width));
}
String String::Arg(long v, unsigned int base, const Width& width) const {
    if (fitsInt(v)) return Arg(static_cast<int>(v), base, width);
    return base == 16 ? Arg(static_cast<unsigned long>(v), base, width) : Arg(Number(v, base, width));
}
String String::Arg(short v, unsigned int base, const Width& width) const {
    return Arg(Number(int{v}, base, width));
}
String String::Arg(unsigned short v, unsigned int base, const Width& width) const {
    return Arg(Number(int{v}, base, width));
}
String String::Arg(unsigned int v, unsigned int base, const Width& width) const {
    return Arg(Number(v, base, width));
}
String String::Arg(unsigned long v, unsigned int base, const Width& width) const {
    return Arg(Number(v, base, width));
}
String String::Arg(long long v, unsigned int base, const Width& width) const {
    return Arg(Number(v, base, width));
}
String String::Arg(unsigned long long v, unsigned int base, const Width& width) const {
    return Arg(Number(v, base, width));
}
String String::Arg(double v, unsigned int precision, const checked_value<unsigned int>& format) const {
    return Arg(formatFloat(v, precision, format));
}
String String::Arg(float v, unsigned int precision, const checked_value<unsigned int>& format) const {
    return Arg(double{v}, precision, format);
}

String String::Number(int v, unsigned int base, const Width& width) {
    return String(formatInteger(v, base, width));
}
String String::Number(unsigned int v, unsigned int base, const Width& width) {
    return String(formatInteger(v, base, width));
}
String String::Number(long v, unsigned int base, const Width& width) {
    return String(formatInteger(v, base, width));
}
String String::Number(unsigned long v, unsigned int base, const Width& width) {
    return String(formatInteger(v, base, width));
}
String String::Number(long long v, unsigned int base, const Width& width) {
    return String(formatInteger(v, base, width));
}
String String::Number(unsigned long long v, unsigned int base, const Width& width) {
    return String(formatInteger(v, base, width));
}
String String::Number(double v, unsigned int precision, const checked_value<unsigned int>& format) {
    return formatFloat(v, precision, format);
}
String String::Number(float v, unsigned int precision, const checked_value<unsigned int>& format) {
    return formatFloat(double{v}, precision, format);
}
