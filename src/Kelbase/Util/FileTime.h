#pragma once

#include <Kelbase/common/common_string.h>

namespace Util {

/// Times of a file or a folder, in seconds since 1970-01-01 00:00 UTC.
///
/// 32 bits end in January 2038 and begin in December 1901; a time outside is read as the nearer end.
struct FileTime {
    int accessed; ///< When it was last read, as far as the volume keeps that.
    int modified; ///< When what is in it was last changed.
};

/// Reads the times of what is at a path; false, and `time` as it was, when that cannot be asked.
bool ReadFileTime(const String& path, FileTime& time);
/// Sets the times, to the full second; false when that is refused.
bool WriteFileTime(const String& path, const FileTime& time);

} // namespace Util
