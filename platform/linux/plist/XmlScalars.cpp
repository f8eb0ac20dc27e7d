#include "XmlScalars.h"

#include "BinaryPlistWriter.h"
#include "XmlCharacters.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>

namespace macplatform {

namespace {

/// Removes a sign from the start of the text. Returns true if the sign is a minus.
bool parseSign(std::string_view& text) {
    const bool isMinus = text.substr(0, 1) == "-";
    if (isMinus || text.substr(0, 1) == "+") text.remove_prefix(1);
    return isMinus;
}

/// Returns the number of days from 2001-01-01 to a day of the Gregorian calendar.
int daysFrom2001(int year, int month, int day) {
    if (month < 3) {
        --year; // The year begins in March, so that a leap day is the last day of a year.
        month += 12;
    }
    year += 400; // One cycle of 146,097 days, so that no division has a negative operand.
    const int days = 365 * year + year / 4 - year / 100 + year / 400 + (153 * (month - 3) + 2) / 5 + day;
    constexpr int daysUntil2001 = 876889;
    return days - daysUntil2001;
}

/// Returns the value of a base-64 digit, or 64 for any other character.
unsigned base64Value(char c) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    return static_cast<unsigned>(std::min(digits.find(c), digits.size()));
}

std::optional<std::string> booleanFrom(std::string_view text, bool value) {
    return text.empty() ? std::optional(BooleanObject(value)) : std::nullopt;
}

} // namespace

std::optional<std::string> IntegerFrom(std::string_view text) {
    text = Stripped(text);
    const bool isMinus = parseSign(text);
    const bool isHexadecimal = text.size() > 2 && text[0] == '0' && (text[1] | 0x20) == 'x';
    if (isHexadecimal) text.remove_prefix(2);
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value, isHexadecimal ? 16 : 10);
    constexpr std::uint64_t lowest = std::uint64_t{1} << 63;
    if (text.empty() || read.ec != std::errc() || read.ptr != end || (isMinus && value > lowest))
        return std::nullopt;
    return IntegerObject(value, isMinus && value > 0);
}

std::optional<std::string> RealFrom(std::string_view text) {
    text = Stripped(text);
    const bool isMinus = parseSign(text);
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    const bool isNumber = !text.empty() && (IsDigit(text[0]) || text[0] == '.');
    const bool isWord = text == "nan" || text == "inf" || text == "infinity";
    if ((!isNumber && !isWord) || read.ec != std::errc() || read.ptr != end) return std::nullopt;
    return RealObject(isMinus && value != 0 ? -value : value); // The parser cannot write a negative zero.
}

std::optional<std::string> DateFrom(std::string_view text) {
    constexpr std::string_view pattern = "0000-00-00T00:00:00Z";
    text = Stripped(text);
    if (text.size() != pattern.size()) return std::nullopt;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] == '0' ? !IsDigit(text[i]) : text[i] != pattern[i]) return std::nullopt;
    }
    const auto number = [text](std::size_t at) { return (text[at] - '0') * 10 + (text[at + 1] - '0'); };
    const bool isDay = number(5) >= 1 && number(5) <= 12 && number(8) >= 1 && number(8) <= 31;
    if (!isDay || number(11) > 23 || number(14) > 59 || number(17) > 59) return std::nullopt;
    const int days = daysFrom2001(number(0) * 100 + number(2), number(5), number(8));
    return DateObject(days * 86400.0 + number(11) * 3600 + number(14) * 60 + number(17));
}

std::optional<std::string> DataFrom(std::string_view text) {
    std::string digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits), [](char c) { return !IsSpace(c); });
    const std::size_t count = std::min(digits.find('='), digits.size());
    const std::size_t padding = digits.size() - count;
    if (digits.size() % 4 != 0 || padding > 2 || (padding == 2 && digits.back() != '=')) return std::nullopt;
    std::string bytes;
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned value = base64Value(digits[i]);
        if (value > 63) return std::nullopt;
        bits = bits << 6 | value;
        if (i % 4 != 0) bytes += static_cast<char>(bits >> (6 - 2 * (i % 4)) & 0xFF);
    }
    return DataObject(bytes);
}

std::optional<std::string> StringFrom(std::string_view text) { return StringObject(text); }

std::optional<std::string> TrueFrom(std::string_view text) { return booleanFrom(text, true); }
std::optional<std::string> FalseFrom(std::string_view text) { return booleanFrom(text, false); }

} // namespace macplatform
