#pragma once

/// @file
/// Makes the values of property lists. Defines the limits of every property list that the platform reads.

#include <macplatform/PropertyList.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace macplatform {

constexpr std::size_t kMaxPropertyListBytes = std::size_t{64} << 20;
constexpr std::size_t kMaxPropertyListValues = std::size_t{1} << 20; ///< At all levels together.
constexpr unsigned kMaxPropertyListDepth = 512; ///< Nested arrays, sets and dictionaries.
/// Strings and data in memory. A binary property list can share a string between many references.
constexpr std::size_t kMaxPropertyListText = std::size_t{256} << 20;

constexpr char kTooLarge[] = "larger than 64 MiB";
constexpr char kTooManyValues[] = "more than 1048576 values";
constexpr char kTooDeep[] = "nested deeper than 512 levels";

/// The bytes are no property list, or the property list exceeds a limit. The message is one line without a
/// path.
struct PropertyListError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The new scalar value of each key of the root dictionary. A key without a value is removed.
using PropertyListChanges = std::map<std::string, std::optional<PropertyValue>>;

PropertyValue NullValue();
PropertyValue BooleanValue(bool value);
PropertyValue IntegerValue(std::int64_t value);
PropertyValue UnsignedValue(std::uint64_t value);
PropertyValue UidValue(std::uint64_t value);
PropertyValue RealValue(double value);
constexpr std::int64_t kSecondsUntil2001 = 978307200; ///< From 1970-01-01 to 2001-01-01, UTC.
PropertyValue DateValue(double secondsFrom2001);
PropertyValue DataValue(std::string_view bytes);
/// The text must be encoded as the strings of `PropertyValue` are.
PropertyValue StringValue(std::string text);
/// Encodes UTF-16, which may contain lone surrogates.
PropertyValue StringValue(std::u16string_view units);
PropertyValue ContainerValue(PropertyValue::Kind kind);

enum class RepeatedKeys { kFirstCounts, kLastCounts };
/// Removes repeated keys from a dictionary. The first occurrence determines the position of a key.
void RemoveRepeatedKeys(PropertyValue& dictionary, RepeatedKeys rule);

} // namespace macplatform
