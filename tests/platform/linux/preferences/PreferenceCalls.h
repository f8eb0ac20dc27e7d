#pragma once

/// @file
/// Sets and synchronises preferences of com.example.app for any user on the current host.

#include "support/NewText.h"

/// Sets a string, or removes the key if the value is null.
inline void Set(const char* key, const char* value) {
    const CFStringRef k = NewText(key);
    const CFStringRef v = value ? NewText(value) : nullptr;
    CFPreferencesSetValue(k, v, CFSTR("com.example.app"), kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
    CFRelease(k);
    if (v) CFRelease(v);
}

inline void SetNumber(const char* key, int value) {
    const CFStringRef k = NewText(key);
    const CFNumberRef v = CFNumberCreate(nullptr, kCFNumberIntType, &value);
    CFPreferencesSetValue(k, v, CFSTR("com.example.app"), kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
    CFRelease(k);
    CFRelease(v);
}

inline bool Synchronise(CFStringRef ofDomain = CFSTR("com.example.app")) {
    return CFPreferencesSynchronize(ofDomain, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
}
