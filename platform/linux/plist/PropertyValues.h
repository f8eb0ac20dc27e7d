#pragma once

/// @file
/// Makes the values of property lists.

#include <macplatform/PropertyList.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

/// The new scalar value of each key of the root dictionary. A key without a value is removed.
using PropertyListChanges = std::map<std::string, std::optional<PropertyValue>>;

PropertyValue NullValue();
PropertyValue BooleanValue(bool value);
PropertyValue IntegerValue(std::int64_t value);
PropertyValue UnsignedValue(std::uint64_t value);
PropertyValue UidValue(std::uint64_t value);
PropertyValue RealValue(double value);
PropertyValue DateValue(double secondsFrom2001);
PropertyValue DataValue(std::string_view bytes);
/// The text must be encoded as the strings of `PropertyValue` are.
PropertyValue StringValue(std::string text);
/// Encodes UTF-16, which may contain lone surrogates.
PropertyValue StringValue(std::u16string_view units);
PropertyValue ContainerValue(PropertyValue::Kind kind);

/// Returns the seconds from 2001-01-01 to a time of the Gregorian calendar, UTC. Numbers outside their range
/// count on: month 13 is January of the next year.
double SecondsFrom2001(std::int64_t year, int month, int day, int hour, int minute, int second);

enum class RepeatedKeys { kFirstCounts, kLastCounts };
/// Removes repeated keys from a dictionary. The first occurrence determines the position of a key.
void RemoveRepeatedKeys(PropertyValue& dictionary, RepeatedKeys rule);

} // namespace macplatform
