#pragma once

/// Finder information in an AppleDouble file: the sidecar `._NAME`, beside a file or folder, that Mac-aware
/// tools keep where a file system has no place for it.

#include "FinderInfo.h"

namespace macplatform {

/// Where the sidecar of an item is, or would be. Empty for what has none: a root, the startup volume's
/// folder.
std::string SidecarPath(const std::string& path);

/// The answer is 0 or an errno: ENOENT when there is no sidecar, EBADMSG when the file of that name is no
/// AppleDouble file or holds no Finder information.
int ReadSidecar(const std::string& sidecar, FinderInfo& info);

/// Changes the 32 bytes in a sidecar that has them, and nothing else of it; makes a new one otherwise.
/// EBADMSG as with reading: such a file is left as it is.
int WriteSidecar(const std::string& sidecar, const FinderInfo& info);

} // namespace macplatform
