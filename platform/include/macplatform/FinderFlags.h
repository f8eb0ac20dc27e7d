#pragma once

/// @file
/// Declares a function that reads Finder flags, and a function that simulates file systems without extended
/// attributes.

#include <cstdint>
#include <optional>
#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// Returns the Finder flags of an item of this machine. The flags are in an extended attribute or in the
/// AppleDouble sidecar. Carbon/Finder.h declares the flags. Returns 0 if the item has no Finder information.
/// Returns no value if the Finder information cannot be read. Does not follow a symbolic link at the end of
/// the path.
std::optional<std::uint16_t> ReadFinderFlags(const std::string& path);

/// If `refused` is true, the platform treats every file system as a file system without extended attributes
/// and stores Finder information in sidecars. If `refused` is false, the platform uses extended attributes
/// where the file system supports them, which is the default.
void SimulateMissingExtendedAttributes(bool isSimulated);

} // namespace macplatform
#pragma GCC visibility pop
