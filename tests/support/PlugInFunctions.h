#pragma once

/// Declares the functions of a test plug-in that has one static instance.

#include <CoreFoundation/CoreFoundation.h>

/// The function block of an instance.
struct PlugInFunctions {
    void* reserved;
    HRESULT (*queryInterface)(void*, REFIID, LPVOID*);
    ULONG (*addReference)(void*);
    ULONG (*release)(void*);
    void (*deliver)(char*);
};

/// Returns the instance itself for every interface.
inline HRESULT GiveInterface(void* self, REFIID, LPVOID* result) {
    *result = self;
    return S_OK;
}
/// Returns 1: a static instance has no reference count.
inline ULONG IgnoreReference(void*) { return 1; }
