#pragma once

/// @file
/// Access and modification times of files and folders.

#include <Kelbase/common/common_string.h>

namespace Util {

/// Times of a file or a folder, in seconds since 1970-01-01 00:00 UTC.
///
/// 32 bits reach from December 1901 to January 2038. A time outside this range is read as the nearer limit.
struct FileTime {
    int accessed; ///< Time of the last read, if the volume records it.
    int modified; ///< Time of the last change of the contents.
};

/// Reads the times of the item at a path. Returns false and leaves `time` unchanged if they cannot be read.
bool ReadFileTime(const String& path, FileTime& time);
/// Sets the times, in whole seconds. Returns false if the system rejects the change.
bool WriteFileTime(const String& path, const FileTime& time);

} // namespace Util
