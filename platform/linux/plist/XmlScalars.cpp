#include "XmlScalars.h"

#include "PropertyValues.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale.h>
#include <stdlib.h>

namespace macplatform {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view withoutSpacesBefore(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(" \t\n\r"), text.size()));
}

/// Returns the value of a word for a real that is no number. Ignores the case.
std::optional<double> realNamed(std::string word) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (char& c : word) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c | 0x20 : c);
    if (word == "nan") return std::numeric_limits<double>::quiet_NaN();
    if (word == "inf" || word == "+inf" || word == "infinity" || word == "+infinity") return infinity;
    if (word == "-inf" || word == "-infinity") return -infinity;
    return std::nullopt;
}

/// Returns the value of a base-64 digit. The padding counts as a digit with the value 0.
/// Returns -1 for every other character.
int base64Value(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (isDigit(c)) return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return c == '=' ? 0 : -1;
}

} // namespace

std::optional<PropertyValue> IntegerFrom(std::string_view text) {
    text = withoutSpacesBefore(text);
    const bool isMinus = text.substr(0, 1) == "-";
    if (isMinus || text.substr(0, 1) == "+") text = withoutSpacesBefore(text.substr(1));
    const bool isHexadecimal = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
    if (isHexadecimal) text.remove_prefix(2);
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number, isHexadecimal ? 16 : 10);
    constexpr std::uint64_t lowest = std::uint64_t{1} << 63;
    if (read.ec != std::errc() || read.ptr != end || (isMinus && number > lowest)) return std::nullopt;
    return isMinus ? IntegerValue(static_cast<std::int64_t>(0 - number)) : UnsignedValue(number);
}

std::optional<PropertyValue> RealFrom(const std::string& text) {
    if (const auto named = realNamed(text)) return RealValue(*named);
    const bool isPlain = !text.empty() && text.find_first_not_of("0123456789.eE+-") == text.npos;
    if (!isPlain) return std::nullopt;
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr); // Has a decimal point.
    char* end = nullptr;
    const double number = strtod_l(text.c_str(), &end, cLocale);
    return end == text.c_str() + text.size() ? std::optional(RealValue(number)) : std::nullopt;
}

std::optional<PropertyValue> DateFrom(std::string_view text) {
    constexpr std::string_view pattern = "-00-00T00:00:00Z"; // Behind the year.
    constexpr std::size_t longestYear = 9;
    const bool isNegative = text.substr(0, 1) == "-";
    if (isNegative) text.remove_prefix(1);
    if (text.size() <= pattern.size() || text.size() > pattern.size() + longestYear) return std::nullopt;
    const std::size_t yearLength = text.size() - pattern.size();
    std::int64_t year = 0;
    for (const char c : text.substr(0, yearLength)) {
        if (!isDigit(c)) return std::nullopt;
        year = year * 10 + (c - '0');
    }
    text.remove_prefix(yearLength);
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == '0' ? !isDigit(text[i]) : text[i] != pattern[i]) return std::nullopt;
    }
    const auto number = [text](std::size_t at) { return (text[at] - '0') * 10 + (text[at + 1] - '0'); };
    return DateValue(
        SecondsFrom2001(isNegative ? -year : year, number(1), number(4), number(7), number(10), number(13)));
}

PropertyValue DataFrom(std::string_view text) {
    std::string bytes;
    std::uint32_t bits = 0;
    unsigned digits = 0, padding = 0;
    for (const char c : text) {
        const int value = base64Value(c);
        const bool isSpace = c == ' ' || (c >= '\t' && c <= '\r');
        if (!isSpace) padding = c == '=' ? padding + 1 : 0;
        if (value < 0) continue;
        bits = bits << 6 | static_cast<unsigned>(value);
        if (++digits % 4 != 0) continue;
        bytes += static_cast<char>(bits >> 16 & 0xFF);
        if (padding < 2) bytes += static_cast<char>(bits >> 8 & 0xFF);
        if (padding < 1) bytes += static_cast<char>(bits & 0xFF);
    }
    return DataValue(bytes);
}

} // namespace macplatform
