#pragma once

/// @file
/// Sets the startup volume: the directory that stands for "/" of the Mac.
///
/// While a startup volume is set, the platform's services and the path calls of the C library in this process
/// redirect the paths `/Library`, `/Applications`, `/Users`, `/System` and `/Volumes`, and all paths below
/// them, to the startup volume. Symbolic links on the volume are followed as on a separate disk: an absolute
/// link starts at the directory of the volume, and no ".." leads out of the directory. All other paths are
/// paths of this machine. A path that already lies inside the directory is not changed.
///
/// At first no startup volume is set, and every path is a path of this machine. The setting applies to the
/// whole process. Change the setting only before the process starts threads.
///
/// A path call of the C library is redirected if a program that is linked with this layer, or a bundle that
/// the program loads, binds the call by name: open, fopen, stat, rename, opendir, mkdir, the calls for
/// extended attributes, and similar calls. Not redirected are raw system calls, child processes, exec,
/// dlopen, fts and glob. For a path on the volume `realpath` returns a path of the Mac. `getcwd` returns, and
/// ftw and nftw report, paths of this machine. A pipe on the volume that is opened for reading behaves like
/// an empty file: the call does not wait for a writer.

#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// Sets the directory of the startup volume. An empty string and "/" remove the setting. Returns false, sets
/// errno and keeps the old setting if `folder` is no directory.
bool SetStartupVolume(const std::string& folder);

/// Returns the directory as an absolute path without symbolic links and without a trailing "/". Returns an
/// empty string if no startup volume is set.
const std::string& StartupVolume();

/// Determines whether a symbolic link at the end of a path is followed.
enum class LastLink { kFollow, kKeep };

/// Converts a path of the Mac to a path of this machine. A path that is redirected to the startup volume
/// becomes a path inside its directory, with symbolic links resolved. A link at the end of the path is
/// resolved only with `LastLink::kFollow`. Names of missing items and a trailing "/" are kept. Any other
/// path, also an empty one, is returned unchanged. Returns an empty string and sets errno if the path cannot
/// be resolved: ELOOP after 40 links, ENAMETOOLONG, EACCES, EINVAL for a path with a NUL, and ENOENT or
/// ENOTDIR if ".." follows a missing item or an item that is no directory.
std::string HostPath(const std::string& macPath, LastLink = LastLink::kFollow);

/// Converts a path of this machine to a path of the Mac: removes the directory of the startup volume from the
/// beginning. Returns a path outside the startup volume unchanged.
std::string MacPath(const std::string& hostPath);

} // namespace macplatform
#pragma GCC visibility pop
