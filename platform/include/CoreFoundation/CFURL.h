#pragma once

/// URLs of files and directories.

#include <CoreFoundation/CFBase.h>

using CFURLRef = const struct __CFURL*;
struct FSRef;

enum CFURLPathStyle : CFIndex {
    kCFURLPOSIXPathStyle = 0,
    kCFURLHFSPathStyle = 1,
    kCFURLWindowsPathStyle = 2,
};

MACPLATFORM_C_BEGIN

/// Creates a URL from a POSIX path. Returns null for an empty path and for the other path styles.
CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef, CFStringRef path, CFURLPathStyle, Boolean isDirectory);
/// Writes a reference to the item at the path. Follows a symbolic link at the end of the path. Returns false
/// if there is no item.
Boolean CFURLGetFSRef(CFURLRef, FSRef*);

MACPLATFORM_C_END
