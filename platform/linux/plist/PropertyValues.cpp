#include "PropertyValues.h"

#include "corefoundation/TextEncoding.h"
#include "trace/PlatformCall.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>
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

/// Returns a fraction from 0 to 1 as ".25", or an empty string for 0.
std::string fractionText(double fraction) {
    char text[512]; // The smallest fraction has more than 300 zeros.
    const auto end = std::to_chars(text, text + sizeof text, fraction, std::chars_format::fixed).ptr;
    return fraction == 0 ? std::string() : std::string(text + 1, end);
}

std::string dateText(double seconds) {
    constexpr double farthest = 1e14; // More than three million years.
    if (!(std::fabs(seconds) < farthest)) return Digits(seconds) + " seconds from 2001";
    const double whole = std::floor(seconds);
    static_assert(sizeof(std::time_t) == 8, "dates can be before 1901 and after 2038");
    const std::time_t since1970 = static_cast<std::time_t>(whole) + kSecondsUntil2001;
    std::tm time = {};
    gmtime_r(&since1970, &time);
    char text[64];
    const int length = std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", time.tm_year + 1900,
                                     time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
    return std::string(text, static_cast<std::size_t>(length)) + fractionText(seconds - whole) + 'Z';
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

PropertyValue StringValue(std::u16string_view units) { return StringValue(Utf8WithSurrogates(units)); }

PropertyValue ContainerValue(Kind kind) { return scalar(kind, {}); }

void RemoveRepeatedKeys(PropertyValue& dictionary, RepeatedKeys rule) {
    const auto& keys = dictionary.keys;
    std::vector<std::size_t> hashes(keys.size()); // Sorting them is faster than a table of all keys.
    std::transform(keys.begin(), keys.end(), hashes.begin(), std::hash<std::string>());
    std::sort(hashes.begin(), hashes.end());
    if (std::adjacent_find(hashes.begin(), hashes.end()) == hashes.end()) return;
    std::unordered_map<std::string_view, std::size_t> positions;
    PropertyValue unique = ContainerValue(Kind::kDictionary);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto [place, isNew] = positions.emplace(keys[i], positions.size());
        if (isNew) unique.keys.push_back(keys[i]);
        if (isNew) unique.values.emplace_back();
        if (isNew || rule == RepeatedKeys::kLastCounts)
            unique.values[place->second] = std::move(dictionary.values[i]);
    }
    dictionary = std::move(unique);
}

} // namespace macplatform
