#pragma once

/// Declares the table of the names of the Finder flags.

#include <array>
#include <cstdint>

namespace xcodhost {

/// A Finder flag, or a field of several bits.
struct FinderFlagName {
    std::uint16_t mask;
    char letter; ///< The letter in the output of the Mac's tool GetFileInfo. '-': none.
    const char* name;
    int shift; ///< The lowest bit of a field. 0 for a flag.
};

/// All sixteen bits of the Finder flags.
inline constexpr std::array<FinderFlagName, 14> kFinderFlagNames = {{
    // mask, letter, name, shift
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
