#pragma once

/// Objects and their ownership. A function with Create or Copy in its name gives the caller one reference. A
/// function with Get in its name returns a borrowed object. A function that creates an object returns null
/// for lack of memory.

#include <MacTypes.h>

#if defined(__LP64__)
using CFIndex = long;
using CFTypeID = unsigned long;
using CFHashCode = unsigned long;
using CFOptionFlags = unsigned long;
#else
using CFIndex = SInt32;
using CFTypeID = UInt32;
using CFHashCode = UInt32;
using CFOptionFlags = UInt32;
#endif

struct CFRange {
    CFIndex location;
    CFIndex length;
};
inline CFRange CFRangeMake(CFIndex location, CFIndex length) { return {location, length}; }

using CFTypeRef = const void*;
using CFPropertyListRef = CFTypeRef;
using CFAllocatorRef = const struct __CFAllocator*;
using CFStringRef = const struct __CFString*;

MACPLATFORM_C_BEGIN

extern const CFAllocatorRef kCFAllocatorDefault; ///< Null.
extern const CFAllocatorRef kCFAllocatorSystemDefault;

/// A null object ends the process with a message, in all five functions below.
CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
CFIndex CFGetRetainCount(CFTypeRef object); ///< Returns 0x7FFFFFFF for an object that is never freed.
CFTypeID CFGetTypeID(CFTypeRef object);

Boolean CFEqual(CFTypeRef left, CFTypeRef right);

MACPLATFORM_C_END
