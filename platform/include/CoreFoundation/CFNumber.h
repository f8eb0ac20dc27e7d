#pragma once

/// Numbers: an integer or a floating-point number as an object.

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
/// Reads the value as the C type of the number type. Returns null for an unknown type. A null `value` ends
/// the process.
CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType, const void* value);
/// Writes the number as the C type of the number type, or the nearest value of that type. Returns false if
/// the conversion loses information or the type is unknown.
Boolean CFNumberGetValue(CFNumberRef, CFNumberType, void* value);

MACPLATFORM_C_END
