#pragma once

/// The 32 bytes that the Finder keeps about an item, as they lie on this machine's disks.
///
/// They are kept in the extended attribute `user.com.apple.FinderInfo` (`osx.com.apple.FinderInfo` where the
/// disk is the Mac's own), or in the AppleDouble sidecar `._NAME` beside the item: where the file system
/// takes no attributes, and where a sidecar that came with the item is the only place that has them.

#include <array>
#include <cstdint>
#include <string>

namespace macplatform {

/// Big-endian; all zero is the same as none. Flags lie at 8, for files and folders alike.
using FinderInfo = std::array<std::uint8_t, 32>;

/// The answer is 0 or an errno. A link itself is asked.
int ReadFinderInfo(const std::string& path, FinderInfo& info);

/// Writes nothing when the item has these bytes already. An owner may write to an item that is read-only.
int WriteFinderInfo(const std::string& path, const FinderInfo& info);

/// The first or last sixteen bytes of a file's or folder's information in the order of bytes of this machine,
/// and back: the same exchange both ways.
void SwapBasicFinderInfo(const std::uint8_t* from, std::uint8_t* to, bool isFolder);

} // namespace macplatform
