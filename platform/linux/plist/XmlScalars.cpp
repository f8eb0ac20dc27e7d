#include "XmlPlist.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <locale.h>
#include <stdlib.h>

namespace macplatform {

std::optional<PropertyValue> IntegerFrom(std::string_view text) {
    const auto skip = [&text](std::size_t count) {
        text.remove_prefix(std::min(text.find_first_not_of(" \t\n\r", count), text.size()));
    };
    skip(0);
    const bool isMinus = text.substr(0, 1) == "-";
    if (isMinus || text.substr(0, 1) == "+") skip(1);
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
    // strtod_l also accepts white space, hexadecimal digits, "nan(1)" and a NaN with a sign.
    if (text.empty() || text.find_first_of(" \t\n\v\f\rxX(") != text.npos) return std::nullopt;
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", nullptr); // Has a decimal point.
    char* end = nullptr;
    const double number = strtod_l(text.c_str(), &end, cLocale);
    const bool isSignedNaN = std::isnan(number) && text.size() > 3;
    if (end != text.c_str() + text.size() || isSignedNaN) return std::nullopt;
    return RealValue(number);
}

std::optional<PropertyValue> DateFrom(std::string_view text) {
    constexpr std::string_view pattern = "-00-00T00:00:00Z";                          // Behind the year.
    const std::size_t longest = pattern.size() + (text.substr(0, 1) == "-" ? 10 : 9); // Nine digits.
    if (text.size() <= pattern.size() || text.size() > longest) return std::nullopt;
    int year = 0;
    const char* const yearEnd = text.data() + text.size() - pattern.size();
    const auto read = std::from_chars(text.data(), yearEnd, year);
    if (read.ec != std::errc() || read.ptr != yearEnd) return std::nullopt;
    text.remove_prefix(text.size() - pattern.size());
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool isDigit = text[i] >= '0' && text[i] <= '9';
        if (pattern[i] == '0' ? !isDigit : text[i] != pattern[i]) return std::nullopt;
    }
    const auto number = [text](std::size_t at) { return (text[at] - '0') * 10 + (text[at + 1] - '0'); };
    std::tm day = {};
    day.tm_year = year - 1900;
    day.tm_mon = number(1) - 1;
    day.tm_mday = number(4);
    const auto midnight = static_cast<double>(timegm(&day) - kSecondsUntil2001);
    return DateValue(midnight + (number(7) * 3600 + number(10) * 60 + number(13)));
}

PropertyValue DataFrom(std::string_view text) {
    // The padding counts as a digit. Its bits are dropped.
    constexpr std::string_view base64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
    std::string bytes;
    std::uint32_t bits = 0;
    unsigned digits = 0, padding = 0;
    for (const char c : text) {
        const std::size_t value = base64.find(c);
        const bool isSpace = c == ' ' || (c >= '\t' && c <= '\r');
        if (!isSpace) padding = c == '=' ? padding + 1 : 0;
        if (value == base64.npos) continue;
        bits = bits << 6 | (value & 0x3F);
        if (++digits % 4 != 0) continue;
        bytes += static_cast<char>(bits >> 16 & 0xFF);
        if (padding < 2) bytes += static_cast<char>(bits >> 8 & 0xFF);
        if (padding < 1) bytes += static_cast<char>(bits & 0xFF);
    }
    return DataValue(bytes);
}

} // namespace macplatform
