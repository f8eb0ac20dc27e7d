#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

// The texts of a property list's elements as objects of a binary one; nothing for a text that the element
// cannot have.

std::optional<std::string> IntegerFrom(std::string_view text);
std::optional<std::string> RealFrom(std::string_view text);
std::optional<std::string> DateFrom(std::string_view text);
std::optional<std::string> DataFrom(std::string_view text);
/// The text must be UTF-8.
std::optional<std::string> StringFrom(std::string_view text);
std::optional<std::string> TrueFrom(std::string_view text);
std::optional<std::string> FalseFrom(std::string_view text);

} // namespace macplatform
