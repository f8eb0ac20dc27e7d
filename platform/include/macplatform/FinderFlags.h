#pragma once

/// @file
/// Finder flags of an item of this machine.

#include <cstdint>
#include <optional>
#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// Changes nothing. The flags (Carbon/Finder.h) from the extended attribute or the AppleDouble sidecar; 0
/// when the item has no Finder information, nothing when it cannot be read. A link itself is asked, not what
/// it points to.
std::optional<std::uint16_t> ReadFinderFlags(const std::string& path);

/// Makes every file system look like one that takes no extended attributes, so that Finder information goes
/// into sidecars; false restores what is so.
void RefuseExtendedAttributes(bool refused);

} // namespace macplatform
#pragma GCC visibility pop
