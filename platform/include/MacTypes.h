#pragma once

/// The Mac's basic types, which the functions of all frameworks use.

#include <cstdint>

/// Declarations between these two macros have C linkage, and the platform's shared library exports them.
#define MACPLATFORM_C_BEGIN _Pragma("GCC visibility push(default)") extern "C" {
#define MACPLATFORM_C_END                                                                                    \
    }                                                                                                        \
    _Pragma("GCC visibility pop")

using UInt8 = std::uint8_t;
using SInt8 = std::int8_t;
using UInt16 = std::uint16_t;
using SInt16 = std::int16_t;
using UInt64 = std::uint64_t;
using SInt64 = std::int64_t;
// long on 32-bit targets, int on other targets: overloads and mangled names depend on the difference.
#if defined(__LP64__)
using UInt32 = unsigned int;
using SInt32 = int;
#else
using UInt32 = unsigned long;
using SInt32 = long;
#endif

using Boolean = unsigned char; ///< Every value except 0 is true. Do not compare with 1.
using UniChar = UInt16;
using OSErr = SInt16;
using OSStatus = SInt32;
using FourCharCode = UInt32;
using OSType = FourCharCode;
using ItemCount = unsigned long;
using ByteCount = unsigned long;
using Ptr = char*;
using Size = long;
using StringPtr = unsigned char*; ///< A length byte, then the text.
using ConstStr255Param = const unsigned char*;

enum : OSErr { noErr = 0 };

#pragma pack(push, 2)
struct Point {
    short v, h;
};
struct Rect {
    short top, left, bottom, right;
};
#pragma pack(pop)
