#pragma once

#include <CoreFoundation/CFBase.h>

using CFNumberRef = const struct __CFNumber*;

enum CFNumberType : int {
    kCFNumberSInt8Type = 1,
    kCFNumberSInt16Type,
    kCFNumberSInt32Type,
    kCFNumberSInt64Type,
    kCFNumberFloat32Type,
    kCFNumberFloat64Type,
    kCFNumberCharType,
    kCFNumberShortType,
    kCFNumberIntType,
    kCFNumberLongType,
    kCFNumberLongLongType,
    kCFNumberFloatType,
    kCFNumberDoubleType,
    kCFNumberCFIndexType,
};

MACPLATFORM_C_BEGIN

CFTypeID CFNumberGetTypeID(void);
CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType, const void* value);
/// False when the value does not fit the type without loss.
Boolean CFNumberGetValue(CFNumberRef, CFNumberType, void* value);

MACPLATFORM_C_END
