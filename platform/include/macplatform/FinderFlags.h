#pragma once

/// @file
/// Reads Finder flags, and simulates file systems without extended attributes.

#include <cstdint>
#include <optional>
#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// Returns the Finder flags of an item of this machine, from the extended attribute or the AppleDouble
/// sidecar. Carbon/Finder.h declares the flags. Returns 0 if the item has no Finder information, and nothing
/// if the Finder information cannot be read. Does not follow a symbolic link at the end of the path. Changes
/// nothing on disk.
std::optional<std::uint16_t> ReadFinderFlags(const std::string& path);

/// If `refused` is true, makes the platform treat every file system as one without extended attributes, so
/// that Finder information is stored in sidecars. If `refused` is false, restores normal behaviour.
void RefuseExtendedAttributes(bool refused);

} // namespace macplatform
#pragma GCC visibility pop
