#pragma once

/// @file
/// Reads and writes Finder information in an AppleDouble file: the sidecar `._NAME` beside a file or
/// directory. Mac-aware tools use a sidecar where the file system has no extended attributes.

#include "FinderInfo.h"

namespace macplatform {

/// Returns the path of the sidecar of an item, whether the sidecar exists or not. Returns an empty string for
/// an item that cannot have a sidecar: "/" and the directory of the startup volume.
std::string SidecarPath(const std::string& path);

/// Reads the Finder information of a sidecar. Returns 0 or an errno: ENOENT if the sidecar does not exist,
/// EBADMSG if the file is not an AppleDouble file or has no Finder information.
int ReadSidecar(const std::string& sidecar, FinderInfo& info);

/// Writes the Finder information of a sidecar. In an existing sidecar only these 32 bytes change. A missing
/// sidecar is created. Returns 0 or an errno. EBADMSG has the same meaning as for `ReadSidecar`, and the file
/// is unchanged then.
int WriteSidecar(const std::string& sidecar, const FinderInfo& info);

} // namespace macplatform
