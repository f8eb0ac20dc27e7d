#pragma once

/// Immutable strings of UTF-16 units.

#include <CoreFoundation/CFBase.h>

using CFStringEncoding = UInt32;
enum : CFStringEncoding {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUTF8 = 0x08000100,
};

/// Returns a constant string, which is never freed. Equal literals give the same object. A literal that is
/// not ASCII ends the process. Only a macro rejects an argument that is no literal.
#define CFSTR(literal) __CFStringMakeConstantString("" literal "")

MACPLATFORM_C_BEGIN

CFStringRef __CFStringMakeConstantString(const char* text);

CFTypeID CFStringGetTypeID(void);
/// Decodes the C string. Returns null if the bytes are not valid in the encoding or the encoding is unknown.
CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding);
/// Creates a string from any units, without validation. Returns null for a negative count.
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* units, CFIndex count);
/// Decodes the Pascal string. Returns null for the same reasons as `CFStringCreateWithCString`.
CFStringRef CFStringCreateWithPascalString(CFAllocatorRef, ConstStr255Param text, CFStringEncoding);

CFIndex CFStringGetLength(CFStringRef); ///< Returns the number of UTF-16 units.
/// Encodes the string and writes it with a terminating NUL. `size` is the size of the buffer in bytes, with
/// the NUL. Returns false if the buffer is too small or the encoding lacks a character. The buffer then
/// contains an empty C string, unless `size` is 0.
Boolean CFStringGetCString(CFStringRef, char* buffer, CFIndex size, CFStringEncoding);
/// Copies the units of the range without a terminating NUL. A range out of bounds ends the process.
void CFStringGetCharacters(CFStringRef, CFRange, UniChar* buffer);

MACPLATFORM_C_END
