#pragma once

/// UUIDs as objects. Equal bytes give the same object.

#include <CoreFoundation/CFBase.h>

using CFUUIDRef = const struct __CFUUID*;

/// The sixteen bytes of a UUID in the order of its printed digits.
struct CFUUIDBytes {
    UInt8 byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7;
    UInt8 byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15;
};

MACPLATFORM_C_BEGIN

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef, CFUUIDBytes);
CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef);
/// Returns a borrowed object that is never freed.
CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
                                         UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8,
                                         UInt8 byte9, UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13,
                                         UInt8 byte14, UInt8 byte15);

MACPLATFORM_C_END
