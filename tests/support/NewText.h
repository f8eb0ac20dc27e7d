#pragma once

/// Declares functions that create CF strings and URLs. The caller must release the results.

#include <CoreFoundation/CoreFoundation.h>

#include <string>

/// Returns a new string, or null if the text is not UTF-8.
inline CFStringRef NewText(const char* text) {
    return CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8);
}

/// Returns a new URL of a directory. The path must be UTF-8.
inline CFURLRef NewURL(const std::string& path) {
    const CFStringRef text = NewText(path.c_str());
    const CFURLRef url = CFURLCreateWithFileSystemPath(kCFAllocatorDefault, text, kCFURLPOSIXPathStyle, true);
    CFRelease(text);
    return url;
}
