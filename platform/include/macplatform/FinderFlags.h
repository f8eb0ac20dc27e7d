#pragma once

/// Finder flags of an item of this machine, read without changing anything.

#include <cstdint>
#include <optional>
#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// The flags (Carbon/Finder.h) from the extended attribute or the AppleDouble sidecar; 0 when the item has no
/// Finder information, nothing when it cannot be read. A link itself is asked, not what it points to.
std::optional<std::uint16_t> ReadFinderFlags(const std::string& path);

} // namespace macplatform
#pragma GCC visibility pop
