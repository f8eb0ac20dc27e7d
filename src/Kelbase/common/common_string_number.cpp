#include <Kelbase/common/common_string.h>

#include <climits>
#include <cstdio>
#include <limits>
#include <type_traits>

namespace {

using Width = checked_value<unsigned int>;

constexpr char digitAlphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr unsigned int noPrecision = 0xFFFFFFFF;

std::string paddedDigits(std::string digits, const Width& width) {
    const unsigned int wanted = width;
    if (digits.size() < wanted) digits.insert(0, wanted - digits.size(), '0');
    return digits;
}

template <typename U>
std::string formatMagnitude(U v, unsigned int base, const Width& width) {
    if (base < 2 || base > 36) base = 10;
    char digits[sizeof(U) * CHAR_BIT];
    char* const end = digits + sizeof digits;
    char* first = end;
    do {
        *--first = digitAlphabet[v % base];
        v /= base;
    } while (v != 0);
    return paddedDigits(std::string(first, end), width);
}

String formatInteger(unsigned int v, unsigned int base, const Width& width) {
    return String(formatMagnitude(v, base, width).c_str());
}

String formatInteger(int v, unsigned int base, const Width& width) {
    if (v >= 0) return formatInteger(static_cast<unsigned int>(v), base, width);
    const unsigned int magnitude = 0u - static_cast<unsigned int>(v);
    if (v != INT_MIN) return String(("-" + formatMagnitude(magnitude, base, width)).c_str());
    // The one value without a positive twin is written in two pieces, and a width pads each.
    if (base < 2 || base > 36) base = 10;
    return String(("-" + formatMagnitude(magnitude / base, base, width) +
                   formatMagnitude(magnitude % base, base, width))
                      .c_str());
}

String formatInteger(unsigned long long v, unsigned int base, const Width& width) {
    return String(formatMagnitude(v, base == 16 ? 16 : 10, width).c_str());
}

String formatInteger(long long v, unsigned int base, const Width& width) {
    const auto bits = static_cast<unsigned long long>(v);
    if (v >= 0 || base == 16) return formatInteger(bits, base, width);
    return String(("-" + formatMagnitude(0ull - bits, 10, width)).c_str());
}

/// A `long` counts as 32 bits wide wherever its value fits them; a wider one is written whole.
template <typename Narrow, typename Long>
bool fits(Long v) {
    return v >= std::numeric_limits<Narrow>::min() && v <= std::numeric_limits<Narrow>::max();
}

String formatWide(unsigned long v, unsigned int base, const Width& width) {
    return String(formatMagnitude(v, base, width).c_str());
}

String formatWide(long v, unsigned int base, const Width& width) {
    const auto bits = static_cast<unsigned long>(v);
    if (v >= 0) return formatWide(bits, base, width);
    return String(("-" + formatMagnitude(0ul - bits, base, width)).c_str());
}

String formatFloat(double value, unsigned int precision, const checked_value<unsigned int>& format) {
    char letter = 'f';
    for (const char known : {'f', 'F', 'e', 'E', 'g', 'G'}) {
        if (format.IsGiven() && format == static_cast<unsigned int>(known)) letter = known;
    }
    char text[1024];
    if (precision == noPrecision) {
        const char pattern[] = {'%', letter, '\0'};
        std::snprintf(text, sizeof text, pattern, value);
    } else {
        const char pattern[] = {'%', '.', '*', letter, '\0'};
        std::snprintf(text, sizeof text, pattern, precision < 99 ? static_cast<int>(precision) : 99, value);
    }
    return String(text);
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
    std::string filled;
    filled.reserve(text->size() - 2 + a.GetLength());
    filled.append(*text, 0, place);
    if (a.text) filled.append(*a.text);
    filled.append(*text, place + 2, std::string::npos);
    return String(std::move(filled));
}

String String::Arg(char c) const { return Arg(String(c)); }
String String::Arg(const Char& c) const { return Arg(String(static_cast<char>(c))); }

String String::Arg(int v, unsigned int base, const Width& width) const {
    return base == 16 ? Arg(static_cast<unsigned int>(v), base, width) : Arg(Number(v, base, width));
}
String String::Arg(long v, unsigned int base, const Width& width) const {
    if (fits<int>(v)) return Arg(static_cast<int>(v), base, width);
    return base == 16 ? Arg(static_cast<unsigned long>(v), base, width) : Arg(Number(v, base, width));
}
String String::Arg(short v, unsigned int base, const Width& width) const {
    return Arg(formatInteger(int{v}, base, width));
}
String String::Arg(unsigned short v, unsigned int base, const Width& width) const {
    return Arg(formatInteger(int{v}, base, width));
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
    return Arg(formatFloat(double{v}, precision, format));
}

String String::Number(int v, unsigned int base, const Width& width) { return formatInteger(v, base, width); }
String String::Number(unsigned int v, unsigned int base, const Width& width) {
    return formatInteger(v, base, width);
}
String String::Number(long v, unsigned int base, const Width& width) {
    return fits<int>(v) ? formatInteger(static_cast<int>(v), base, width) : formatWide(v, base, width);
}
String String::Number(unsigned long v, unsigned int base, const Width& width) {
    return formatWide(v, base, width);
}
String String::Number(long long v, unsigned int base, const Width& width) {
    return formatInteger(v, base, width);
}
String String::Number(unsigned long long v, unsigned int base, const Width& width) {
    return formatInteger(v, base, width);
}
String String::Number(double v, unsigned int precision, const checked_value<unsigned int>& format) {
    return formatFloat(v, precision, format);
}
String String::Number(float v, unsigned int precision, const checked_value<unsigned int>& format) {
    return formatFloat(double{v}, precision, format);
}
