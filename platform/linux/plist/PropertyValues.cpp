#include "PropertyValues.h"

#include "corefoundation/TextEncoding.h"
#include "trace/PlatformCall.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <unordered_map>
#include <vector>

namespace macplatform {

namespace {

using Kind = PropertyValue::Kind;

PropertyValue scalar(Kind kind, std::string text) {
    PropertyValue value;
    value.kind = kind;
    value.text = std::move(text);
    return value;
}

template <typename Number>
PropertyValue wholeNumber(Kind kind, Number number) {
    PropertyValue value = scalar(kind, std::to_string(number));
    value.integer = static_cast<std::int64_t>(number);
    return value;
}

std::int64_t floorDivided(std::int64_t number, std::int64_t divisor) {
    return number / divisor - (number % divisor < 0 ? 1 : 0);
}

std::int64_t daysFrom2001(std::int64_t year, std::int64_t month, std::int64_t day) {
    // The year begins in March here, so that a leap day is the last day of a year.
    const std::int64_t months = year * 12 + month - 3;
    const std::int64_t y = floorDivided(months, 12);
    const std::int64_t leapDays = floorDivided(y, 4) - floorDivided(y, 100) + floorDivided(y, 400);
    constexpr std::int64_t daysUntil2001 = 730791;
    return 365 * y + leapDays + (153 * (months - 12 * y) + 2) / 5 + day - 1 - daysUntil2001;
}

/// Returns a fraction from 0 to 1 as ".25", or an empty string for 0.
std::string fractionText(double fraction) {
    char text[512]; // The smallest fraction has more than 300 zeros.
    const auto end = std::to_chars(text, text + sizeof text, fraction, std::chars_format::fixed).ptr;
    return fraction == 0 ? std::string() : std::string(text + 1, end);
}

std::string dateText(double seconds) {
    constexpr double farthest = 1e14; // More than three million years.
    if (!(std::fabs(seconds) < farthest)) return Digits(seconds) + " seconds from 2001";
    const double fraction = seconds - std::floor(seconds);
    const auto whole = static_cast<std::int64_t>(std::floor(seconds));
    const std::int64_t days = floorDivided(whole, 86400);
    const int time = static_cast<int>(whole - days * 86400);

    auto year = static_cast<std::int64_t>(2001 + std::floor(static_cast<double>(days) / 365.2425));
    while (daysFrom2001(year + 1, 1, 1) <= days) ++year;
    while (daysFrom2001(year, 1, 1) > days) --year;
    int month = 12;
    while (daysFrom2001(year, month, 1) > days) --month;
    const int day = static_cast<int>(days - daysFrom2001(year, month, 1)) + 1;

    char text[64];
    const int length =
        std::snprintf(text, sizeof text, "%04lld-%02d-%02dT%02d:%02d:%02d", static_cast<long long>(year),
                      month, day, time / 3600, time / 60 % 60, time % 60);
    return std::string(text, static_cast<std::size_t>(length)) + fractionText(fraction) + 'Z';
}

std::string loneSurrogate(char16_t unit) {
    return {static_cast<char>(0xE0 | unit >> 12), static_cast<char>(0x80 | (unit >> 6 & 0x3F)),
            static_cast<char>(0x80 | (unit & 0x3F))};
}

std::string describeKey(const std::string& key) {
    const bool isString = key.empty() || key.front() != PropertyValue::kOtherKeyMark;
    return isString ? EscapeSurrogates(Quoted(key)) : key.substr(1);
}

} // namespace

const PropertyValue* PropertyValue::Find(const std::string& key) const {
    const auto found = std::find(keys.begin(), keys.end(), key);
    return found == keys.end() ? nullptr : &values[static_cast<std::size_t>(found - keys.begin())];
}

const char* PropertyValue::KindName() const {
    static const char* const names[] = {"none", "null", "boolean", "integer", "real", "string",
                                        "data", "date", "uid",     "array",   "set",  "dict"};
    return names[static_cast<std::size_t>(kind)];
}

std::string PropertyValue::Describe() const {
    if (kind == Kind::kString) return EscapeSurrogates(Quoted(text));
    if (kind == Kind::kData) return '<' + text + '>';
    if (kind < Kind::kArray) return text;

    const bool isDictionary = kind == Kind::kDictionary;
    const auto& members = isDictionary ? values : items;
    std::string described = isDictionary ? "{" : kind == Kind::kSet ? "(" : "[";
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (i > 0) described += ", ";
        if (isDictionary) described += describeKey(keys[i]) + ": ";
        described += members[i].Describe();
    }
    return described += isDictionary ? '}' : kind == Kind::kSet ? ')' : ']';
}

bool operator==(const PropertyValue& left, const PropertyValue& right) {
    const bool areNaNs = std::isnan(left.real) && std::isnan(right.real);
    return left.kind == right.kind && left.text == right.text && left.integer == right.integer &&
           (left.real == right.real || areNaNs) && left.items == right.items && left.keys == right.keys &&
           left.values == right.values;
}

std::string EscapeSurrogates(const std::string& text) {
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = [&text, i](std::size_t at) { return static_cast<unsigned char>(text[i + at]); };
        const bool isSurrogate = byte(0) == 0xED && i + 2 < text.size() && byte(1) >= 0xA0;
        if (!isSurrogate) {
            escaped += text[i];
            continue;
        }
        char unit[8];
        const unsigned surrogate = 0xD000U | (byte(1) & 0x3FU) << 6 | (byte(2) & 0x3FU);
        static_cast<void>(std::snprintf(unit, sizeof unit, "\\u%04X", surrogate));
        escaped += unit;
        i += 2;
    }
    return escaped;
}

PropertyValue NullValue() { return scalar(Kind::kNull, "null"); }

PropertyValue BooleanValue(bool value) {
    PropertyValue made = scalar(Kind::kBoolean, value ? "true" : "false");
    made.integer = value ? 1 : 0;
    return made;
}

PropertyValue IntegerValue(std::int64_t value) { return wholeNumber(Kind::kInteger, value); }
PropertyValue UnsignedValue(std::uint64_t value) { return wholeNumber(Kind::kInteger, value); }
PropertyValue UidValue(std::uint64_t value) { return wholeNumber(Kind::kUid, value); }

PropertyValue RealValue(double value) {
    PropertyValue made = scalar(Kind::kReal, std::isnan(value) ? "nan" : Digits(value));
    made.real = value;
    return made;
}

PropertyValue DateValue(double secondsFrom2001) {
    PropertyValue made = scalar(Kind::kDate, dateText(secondsFrom2001));
    made.real = secondsFrom2001;
    return made;
}

PropertyValue DataValue(std::string_view bytes) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        (text += digits[byte >> 4]) += digits[byte & 15];
    }
    return scalar(Kind::kData, std::move(text));
}

PropertyValue StringValue(std::string text) { return scalar(Kind::kString, std::move(text)); }

PropertyValue StringValue(std::u16string_view units) {
    if (auto text = EncodeUtf8(units)) return StringValue(std::move(*text));
    std::string text;
    for (std::size_t i = 0; i < units.size();) {
        const bool isHigh = (units[i] & 0xFC00) == 0xD800;
        const auto character = EncodeUtf8(units.substr(i, isHigh ? 2 : 1));
        text += character ? *character : loneSurrogate(units[i]);
        i += character && isHigh ? 2 : 1;
    }
    return StringValue(std::move(text));
}

PropertyValue ContainerValue(Kind kind) { return scalar(kind, {}); }

double SecondsFrom2001(std::int64_t year, int month, int day, int hour, int minute, int second) {
    const auto days = static_cast<double>(daysFrom2001(year, month, day));
    return days * 86400 + hour * 3600 + minute * 60 + second;
}

void RemoveRepeatedKeys(PropertyValue& dictionary, RepeatedKeys rule) {
    auto& keys = dictionary.keys;
    auto& values = dictionary.values;
    std::unordered_map<std::string_view, std::size_t> positions;
    std::vector<bool> isRepeated(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto [first, isNew] = positions.emplace(keys[i], i);
        isRepeated[i] = !isNew;
        if (!isNew && rule == RepeatedKeys::kLastCounts) values[first->second] = std::move(values[i]);
    }
    if (positions.size() == keys.size()) return;
    PropertyValue unique = ContainerValue(Kind::kDictionary);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (isRepeated[i]) continue;
        unique.keys.push_back(std::move(keys[i]));
        unique.values.push_back(std::move(values[i]));
    }
    dictionary = std::move(unique);
}

} // namespace macplatform
