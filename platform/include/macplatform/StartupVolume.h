#pragma once

/// @file
/// Declares the startup volume: the directory of this machine that represents "/" of the Mac.
///
/// While a startup volume is set, the platform's services and the path calls of the C library in this process
/// redirect the paths `/Library`, `/Applications`, `/Users`, `/System` and `/Volumes`, and all paths below
/// them, to the startup volume. Symbolic links on the volume are followed as on a separate disk: an absolute
/// link starts at the directory of the volume, and ".." cannot leave the directory. All other paths are paths
/// of this machine. A path of this machine that is inside the directory is not changed.
///
/// By default no startup volume is set, and every path is a path of this machine. The setting applies to the
/// whole process and is not synchronized: it must not change while another thread uses paths.
///
/// The platform interposes the path calls of the C library in a program that is linked with it and in the
/// bundles that the program loads: open, fopen, stat, rename, opendir, mkdir, the calls for extended
/// attributes, and similar calls. It does not redirect raw system calls, the calls of other programs that the
/// process starts, exec, dlopen, fts and glob. For a path on the volume, `realpath` returns a path of the
/// Mac. `getcwd`, ftw and nftw return paths of this machine. If a pipe on the volume is opened for reading,
/// the pipe behaves like an empty file: the call does not wait for a writer.

#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// Sets the directory of the startup volume. An empty string and "/" remove the setting. If `folder` is not a
/// directory or cannot be read, returns false, sets errno and keeps the old setting.
bool SetStartupVolume(const std::string& folder);

/// Returns the directory of the startup volume as an absolute path without symbolic links and without a
/// trailing "/". Returns an empty string if no startup volume is set.
const std::string& StartupVolume();

/// Determines whether a symbolic link at the end of a path is followed.
enum class LastLink { kFollow, kNoFollow };

/// Converts a path of the Mac to a path of this machine. A path that is redirected to the startup volume
/// becomes a path inside its directory, with symbolic links resolved. A link at the end of the path is
/// resolved only with `LastLink::kFollow`. The items at the end of the path may be missing. A trailing "/" is
/// kept. Any other path, also an empty path, is returned unchanged. Returns an empty string and sets errno if
/// the path cannot be resolved. The errno is ELOOP after 40 links, ENAMETOOLONG, EACCES, EINVAL for a path
/// with a NUL, ENOENT if ".." follows a missing item, or ENOTDIR if ".." follows an item that is not a
/// directory.
std::string HostPath(const std::string& macPath, LastLink = LastLink::kFollow);

/// Converts a path of this machine to a path of the Mac: removes the directory of the startup volume from the
/// beginning. Returns a path outside the startup volume unchanged.
std::string MacPath(const std::string& hostPath);

} // namespace macplatform
#pragma GCC visibility pop
