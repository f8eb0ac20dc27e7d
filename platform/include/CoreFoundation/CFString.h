#pragma once

/// Strings of UTF-16 units.

#include <CoreFoundation/CFBase.h>

using CFStringEncoding = UInt32;
enum : CFStringEncoding {
    kCFStringEncodingMacRoman = 0,
    kCFStringEncodingASCII = 0x0600,
    kCFStringEncodingUTF8 = 0x08000100,
};

/// A string that is never freed; the same text gives the same object. ASCII only.
#define CFSTR(literal) __CFStringMakeConstantString("" literal "")

MACPLATFORM_C_BEGIN

CFStringRef __CFStringMakeConstantString(const char* text);

CFTypeID CFStringGetTypeID(void);
/// Null when the bytes are not valid in the encoding.
CFStringRef CFStringCreateWithCString(CFAllocatorRef, const char* text, CFStringEncoding);
/// Takes any units: nothing is validated.
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* units, CFIndex count);
CFStringRef CFStringCreateWithPascalString(CFAllocatorRef, ConstStr255Param text, CFStringEncoding);

CFIndex CFStringGetLength(CFStringRef); ///< In UTF-16 units.
/// False when the whole text and its NUL do not fit or a character has no form in the encoding; the buffer
/// then holds an empty text. `size` counts the NUL.
Boolean CFStringGetCString(CFStringRef, char* buffer, CFIndex size, CFStringEncoding);
/// No NUL is added. A range that is out of bounds ends the process.
void CFStringGetCharacters(CFStringRef, CFRange, UniChar* buffer);

MACPLATFORM_C_END
