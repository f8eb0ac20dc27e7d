#pragma once

/// @file
/// Declares a second implementation of number parsing and formatting. This implementation is slow and has no
/// fast path. Tests and fuzzers compare the library with this implementation.

#include <Kelbase/common/common_string.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace number_model {

/// The result of parsing a number. `value` is 0 if `ok` is false.
template <typename T>
struct Parsed {
    bool ok = false;
    T value = 0;
};

inline bool IsSpace(char c) { return c != '\0' && std::strchr(" \t\n\v\f\r\xA0", c); }

inline std::string_view Stripped(std::string_view text) {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
    return text;
}

inline void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
}

/// Returns the text without white space at its ends, with `point` in place of each decimal separator, and
/// with ASCII characters in place of full-width digits and signs. Returns no value if the text is not ASCII
/// and the library cannot convert it to UTF-16. The conversion removes the text after a NUL.
inline std::optional<std::string> Normalized(std::string_view bytes, char point) {
    std::string text(Stripped(bytes));
    for (const char* separator : {".", ","}) ReplaceAll(text, separator, std::string(1, point));
    bool isAscii = true;
    for (const char c : text) isAscii = isAscii && static_cast<unsigned char>(c) < 0x80;
    if (isAscii) return text;
    String library;
    for (const char c : text) library += c;
    const shared_array<unsigned short> units = library.Unicode(1);
    if (!units) return std::nullopt;
    text = String(units.get(), 1).Latin1();
    const char fullWidthZero[] = "\uFF10";
    for (char digit = 0; digit <= 9; ++digit) {
        std::string wide = fullWidthZero;
        wide.back() = static_cast<char>(wide.back() + digit);
        ReplaceAll(text, wide, std::string(1, static_cast<char>('0' + digit)));
    }
    for (const char* stop : {"\uFF0E", "\u3002"}) ReplaceAll(text, stop, std::string(1, point));
    for (const char* minus : {"\uFF0D", "\u2212"}) ReplaceAll(text, minus, "-");
    return text;
}

inline Parsed<double> ToDouble(std::string_view bytes, char point) {
    const std::optional<std::string> text = Normalized(bytes, point);
    if (!text || text->empty()) return {};
    char* end = nullptr;
    const double value = std::strtod(text->c_str(), &end);
    if (end != text->c_str() + text->size()) return {};
    return {true, value};
}

/// Returns the value of a byte as a digit of `base`, or -1 if the byte is not a digit. The bytes are compared
/// as signed numbers.
inline int DigitOf(char c, unsigned int base) {
    const auto code = static_cast<signed char>(c);
    const long long letters = static_cast<long long>(base) - 10;
    if (code >= '0' && code <= '9') return code - '0' < static_cast<long long>(base) ? code - '0' : -1;
    if (base <= 10) return -1;
    const bool isSmall = code > 0x60 && code < 'a' + letters;
    const bool isCapital = code >= 0x41 && code < 'A' + letters;
    if (!isSmall && !isCapital) return -1;
    return code >= 'a' && code <= 'z' ? code - 87 : code - 55;
}

/// The sign and the magnitude of an integer. `isHuge` is true if the magnitude does not fit 64 bits.
struct Magnitude {
    bool minus = false;
    bool isHuge = false;
    unsigned long long value = 0;

    bool IsAtMost(unsigned long long most) const { return !isHuge && value <= most; }
};

inline std::optional<Magnitude> ToMagnitude(std::string_view bytes, unsigned int base) {
    const std::optional<std::string> text = Normalized(bytes, '.');
    if (!text) return std::nullopt;
    std::string_view digits = Stripped(*text);
    Magnitude result;
    if (!digits.empty() && (digits[0] == '-' || digits[0] == '+')) {
        result.minus = digits[0] == '-';
        digits.remove_prefix(1);
    }
    if (digits.empty()) return std::nullopt;
    for (const char c : digits) {
        const int digit = DigitOf(c, base);
        if (digit < 0) return std::nullopt;
        const auto added = static_cast<unsigned long long>(digit);
        result.isHuge =
            result.isHuge || result.value > (std::numeric_limits<unsigned long long>::max() - added) / base;
        result.value = result.value * base + added;
    }
    return result;
}

/// Returns the number, converted to `S`, if `accepted` is true. Returns a failure otherwise.
template <typename S>
Parsed<S> ParsedIf(bool accepted, const Magnitude& number) {
    if (!accepted) return {};
    return {true, static_cast<S>(number.minus ? 0 - number.value : number.value)};
}

/// The results that the functions of `String` must return for an integer.
struct Integers {
    Parsed<short> toShort;
    Parsed<unsigned short> toUShort;
    Parsed<int> toInt;
    Parsed<unsigned int> toUInt;
    Parsed<long long> toInt64;
    Parsed<unsigned long long> toUInt64;

    Integers(std::string_view bytes, unsigned int base) {
        const std::optional<Magnitude> number = ToMagnitude(bytes, base);
        if (!number) return;
        const bool minus = number->minus;
        toShort = ParsedIf<short>(number->IsAtMost(minus ? 65535 : 32767), *number);
        toUShort = ParsedIf<unsigned short>(!minus && number->IsAtMost(65535), *number);
        toInt = ParsedIf<int>(number->IsAtMost(2147483647u + (minus ? 1u : 0u)), *number);
        toUInt = ParsedIf<unsigned int>(!minus && number->IsAtMost(4294967295u), *number);
        toInt64 = ParsedIf<long long>(number->IsAtMost(minus ? 0u : 4294967295u), *number);
        toInt64.value = static_cast<int>(toInt64.value); // the low 32 bits, sign-extended
        toUInt64 = ParsedIf<unsigned long long>(!minus && !number->isHuge, *number);
    }
};

/// Returns the digits of a number in a base from 2 to 36. Zeros pad the digits on the left to `width` digits.
inline std::string DigitsOf(unsigned long long value, unsigned int base, unsigned int width) {
    std::string digits;
    do {
        digits.insert(0, 1, "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[value % base]);
        value /= base;
    } while (value != 0);
    return digits.size() < width ? std::string(width - digits.size(), '0') + digits : digits;
}

/// Returns the output of snprintf for a conversion letter. `precision` must be at most 99. A negative
/// precision means the default of the C library.
inline std::string Printed(double value, int precision, char letter) {
    char text[1024];
    const std::string format = std::string(precision < 0 ? "%" : "%.*") + letter;
    if (precision < 0) {
        std::snprintf(text, sizeof text, format.c_str(), value);
    } else {
        std::snprintf(text, sizeof text, format.c_str(), precision, value);
    }
    return text;
}

} // namespace number_model
