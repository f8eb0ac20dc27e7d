#pragma once

/// Functions that make text for a person: escaped text of unknown origin, numbers, durations.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace xcodhost {

/// Returns the text for one line of a terminal. Writes control characters as `\r`, `\n`, `\t` or `\xNN`, and
/// bytes that are not UTF-8 as `\xNN`.
std::string Printable(std::string_view text);

/// Returns `Printable(text)` in quotation marks.
std::string PrintableQuoted(std::string_view text);

/// Returns "0x" and the lowest `digits` hexadecimal digits of the value, in upper case.
std::string Hex(std::uint32_t value, int digits);

/// Returns the texts with the separator between them.
std::string Join(const std::vector<std::string>& texts, std::string_view separator);

/// Returns `Printable` of the texts with ", " between them, or "none" if there are none.
std::string ListText(const std::vector<std::string>& texts);

/// Returns the count and the noun in singular or plural: "1 change", "2 changes".
std::string Counted(std::size_t count, const std::string& noun);

/// Returns a duration in seconds with the fewest digits that identify the number: "0.2 s".
std::string Seconds(double seconds);

} // namespace xcodhost
