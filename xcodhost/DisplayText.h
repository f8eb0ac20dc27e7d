#pragma once

/// Texts of unknown origin, made fit for one line of a terminal.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace xcodhost {

/// Control characters become `\r`, `\n`, `\t` or `\xNN`, and so do bytes that are no UTF-8.
std::string Printable(std::string_view text);

/// The same, in quotation marks.
std::string PrintableQuoted(std::string_view text);

/// "0x" and as many upper-case digits.
std::string Hex(std::uint32_t value, int digits);

/// "1 change", "2 changes".
std::string Counted(std::size_t count, const std::string& noun);

/// "0.2 s": as few digits as tell it.
std::string Seconds(double seconds);

} // namespace xcodhost
