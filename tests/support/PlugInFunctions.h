#pragma once

#include <CoreFoundation/CoreFoundation.h>

/// The functions of an instance that is there once and for all.
struct PlugInFunctions {
    void* reserved;
    HRESULT (*queryInterface)(void*, REFIID, LPVOID*);
    ULONG (*addReference)(void*);
    ULONG (*release)(void*);
    void (*deliver)(char*);
};

inline HRESULT GiveInterface(void* self, REFIID, LPVOID* result) {
    *result = self;
    return S_OK;
}
inline ULONG CountNothing(void*) { return 1; }
