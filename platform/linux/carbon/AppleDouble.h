#pragma once

/// @file
/// Declares functions that read and write Finder information in an AppleDouble file: the sidecar `._NAME`
/// beside the file or directory NAME. Programs for the Mac use a sidecar if the file system does not support
/// extended attributes.

#include "FinderInfo.h"

namespace macplatform {

/// Returns the path of the sidecar of an item. The sidecar need not exist. Returns an empty string for an
/// item that cannot have a sidecar: "/" and the directory of the startup volume.
std::string SidecarPath(const std::string& path);

/// Reads the Finder information of a sidecar. Returns 0 or an errno. The errno is ENOENT if the sidecar does
/// not exist, and EBADMSG if the file is not an AppleDouble file or has no Finder information.
int ReadSidecar(const std::string& sidecar, FinderInfo& info);

/// Writes the Finder information of a sidecar. Changes only these 32 bytes of an existing sidecar. Creates a
/// missing sidecar. Returns 0 or an errno. EBADMSG has the same meaning as for `ReadSidecar`. The file is
/// then unchanged.
int WriteSidecar(const std::string& sidecar, const FinderInfo& info);

} // namespace macplatform
