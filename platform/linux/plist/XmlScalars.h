#pragma once

/// @file
/// Reads the contents of scalar XML elements. Every function returns no value if the element cannot have the
/// text.

#include <macplatform/PropertyList.h>

#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

/// White space before the sign and before the digits is accepted, but not behind the digits.
std::optional<PropertyValue> IntegerFrom(std::string_view text);
/// A number that is too large is infinite.
std::optional<PropertyValue> RealFrom(const std::string& text);
/// Numbers outside their range count on: month 13 is January of the next year.
std::optional<PropertyValue> DateFrom(std::string_view text);
/// Ignores characters that are not base-64 digits, and digits that do not form a whole group of four.
PropertyValue DataFrom(std::string_view text);

} // namespace macplatform
