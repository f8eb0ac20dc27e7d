#pragma once

/// @file
/// Declares functions that read and write the Finder information of an item: the 32 bytes that the Finder
/// stores for a file or directory.
///
/// The bytes are in the extended attribute `user.com.apple.FinderInfo` (`osx.com.apple.FinderInfo` on an HFS+
/// volume). They are in the AppleDouble sidecar `._NAME` beside the item if the file system does not support
/// extended attributes, or if the item has a sidecar and no attribute.

#include <array>
#include <cstdint>
#include <string>

namespace macplatform {

/// The bytes as they are on the disk: big-endian, with the flags at offset 8 for files and directories. An
/// item without Finder information has 32 zero bytes.
using FinderInfo = std::array<std::uint8_t, 32>;

/// Reads the Finder information of an item. Returns 0 or an errno. Does not follow a symbolic link.
int ReadFinderInfo(const std::string& path, FinderInfo& info);

/// Writes the Finder information of an item. Does nothing if the item already has these bytes. The owner of a
/// read-only item can write its Finder information. Returns 0 or an errno.
int WriteFinderInfo(const std::string& path, const FinderInfo& info);

/// Copies the first 16 bytes of the Finder information of a file or directory from `from` to `to`. Converts
/// the fields between big-endian and the byte order of this machine. The conversion is the same in both
/// directions.
void SwapBasicFinderInfo(const std::uint8_t* from, std::uint8_t* to, bool isFolder);

} // namespace macplatform
