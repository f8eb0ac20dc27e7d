#pragma once

#include <CoreFoundation/CFBase.h>

using CFURLRef = const struct __CFURL*;
struct FSRef;

enum CFURLPathStyle : CFIndex {
    kCFURLPOSIXPathStyle = 0,
    kCFURLHFSPathStyle = 1,
    kCFURLWindowsPathStyle = 2,
};

MACPLATFORM_C_BEGIN

/// POSIX paths only: the other styles answer null, as an empty path does.
CFURLRef CFURLCreateWithFileSystemPath(CFAllocatorRef, CFStringRef path, CFURLPathStyle, Boolean isDirectory);
/// False when there is nothing at the path. A link in last place is followed.
Boolean CFURLGetFSRef(CFURLRef, FSRef*);

MACPLATFORM_C_END
