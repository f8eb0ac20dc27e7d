#pragma once

/// The Finder flags by the names that people know them by.

#include <array>
#include <cstdint>

namespace xcodhost {

struct FinderFlagName {
    std::uint16_t mask;
    char letter; ///< As the developer tools' GetFileInfo shows it; '-' where that has none.
    const char* name;
    int shift; ///< Of a field that is wider than one bit; 0 for a flag.
};

/// Every bit of the sixteen has its place here.
inline constexpr std::array<FinderFlagName, 14> kFinderFlagNames = {{
    {0x8000, 'A', "alias", 0},
    {0x4000, 'V', "invisible", 0},
    {0x2000, 'B', "bundle", 0},
    {0x1000, 'S', "name locked", 0},
    {0x0800, 'T', "stationery", 0},
    {0x0400, 'C', "custom icon", 0},
    {0x0200, '-', "reserved", 0},
    {0x0100, 'I', "inited", 0},
    {0x0080, 'N', "no INITs", 0},
    {0x0040, 'M', "shared", 0},
    {0x0020, '-', "reserved", 0},
    {0x0010, 'E', "hidden extension", 0},
    {0x000E, 'L', "label colour", 1},
    {0x0001, 'D', "on desk", 0},
}};

} // namespace xcodhost
