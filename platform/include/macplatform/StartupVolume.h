#pragma once

/// @file
/// The folder that stands for "/" of the Mac.
///
/// While one is set, the platform's own services and the path calls of the C library made in this process see
/// `/Library`, `/Applications`, `/Users`, `/System` and `/Volumes` inside it. Links are followed as on a disk
/// of its own: an absolute link starts at the folder again, and no ".." leads out of it. Other paths are
/// those of this machine. A path that already lies inside the folder is taken as it is.
///
/// None is set at first, and all paths are those of this machine. Settings belong to the process and are made
/// before its threads, if it has any, start.
///
/// The C library's calls are those that a program linked with this layer, or a bundle that it loads, binds to
/// by name (open, fopen, stat, rename, opendir, mkdir, the extended attributes and their kin). Not seen
/// inside the folder: raw system calls, programs that are started, exec, dlopen, fts and glob. `realpath` of
/// a path on the volume answers the Mac's path again; `getcwd` and walks (ftw) answer this machine's. A pipe
/// on the volume that is opened to read counts as a file that is empty: its other end is not waited for.

#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// Sets the folder; an empty text and "/" set none. False, with errno and the old setting kept, when it is no
/// folder.
bool SetStartupVolume(const std::string& folder);

/// The folder as an absolute path without links and without a trailing "/"; empty when none is set.
const std::string& StartupVolume();

/// What becomes of a link at the end of a path.
enum class LastLink { kFollow, kKeep };

/// Where a path of the Mac lies on this machine: inside the startup volume, with every link on the way
/// resolved, or the path as it is (an empty one too). What does not exist yet keeps its name, and a trailing
/// "/" stays. Empty, with errno, when the path cannot be resolved: ELOOP after 40 links, ENAMETOOLONG,
/// EACCES, EINVAL for a path with a NUL in it, and ENOENT or ENOTDIR where ".." follows something that is
/// missing or no folder.
std::string HostPath(const std::string& macPath, LastLink = LastLink::kFollow);

/// How the Mac names a path of this machine: without the startup volume's folder where the path lies in it.
std::string MacPath(const std::string& hostPath);

} // namespace macplatform
#pragma GCC visibility pop
