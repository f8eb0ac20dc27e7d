#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>

inline CFStringRef NewText(const char* text) {
    return CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8);
}

inline CFURLRef NewURL(const std::string& path) {
    const CFStringRef text = NewText(path.c_str());
    const CFURLRef url = CFURLCreateWithFileSystemPath(kCFAllocatorDefault, text, kCFURLPOSIXPathStyle, true);
    CFRelease(text);
    return url;
}
