#pragma once

/// The folder that stands for "/" of the Mac.
///
/// While one is set, the platform's own services and every path call of the C library made in this process
/// see `/Library`, `/Applications`, `/Users`, `/System` and `/Volumes` inside it. Links are followed as on a
/// disk of its own: an absolute link starts at the folder again, and no ".." leads out of it. Other paths
/// are those of this machine. A path that already lies inside the folder is taken as it is.
///
/// None is set at first, and all paths are those of this machine. Settings belong to the process and are made
/// before its threads, if it has any, start.

#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// Sets the folder; an empty text sets none. False, with errno and the old setting kept, when it is no
/// folder.
bool SetStartupVolume(const std::string& folder);

/// The folder as an absolute path without links and without a trailing "/"; empty when none is set.
const std::string& StartupVolume();

enum class LastLink { Follow, Keep };

/// Where a path of the Mac lies on this machine: inside the startup volume, with every link on the way
/// resolved, or the path as it is. What does not exist yet keeps its name. Empty, with errno ELOOP,
/// ENAMETOOLONG or EACCES, when the path cannot be resolved.
std::string HostPath(const std::string& macPath, LastLink = LastLink::Follow);

} // namespace macplatform
#pragma GCC visibility pop
