#pragma once

/// @file
/// Converts the text of a scalar XML element to an encoded object of a binary property list. Every function
/// returns no value if the element cannot have the text.

#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

std::optional<std::string> IntegerFrom(std::string_view text);
std::optional<std::string> RealFrom(std::string_view text);
std::optional<std::string> DateFrom(std::string_view text);
std::optional<std::string> DataFrom(std::string_view text);
/// The text must be UTF-8.
std::optional<std::string> StringFrom(std::string_view text);
std::optional<std::string> TrueFrom(std::string_view text);
std::optional<std::string> FalseFrom(std::string_view text);

} // namespace macplatform
