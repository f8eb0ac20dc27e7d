#pragma once

/// The C form of the interface that every plug-in instance begins with.

#include <CoreFoundation/CFUUID.h>

using HRESULT = SInt32;
using ULONG = UInt32;
using LPVOID = void*;
using REFIID = CFUUIDBytes;

// The Mac's own values, not those of other systems.
#define S_OK (static_cast<HRESULT>(0x00000000))
#define E_NOINTERFACE (static_cast<HRESULT>(0x80000004UL))

/// First slots of every function block.
#define IUNKNOWN_C_GUTS                                                                                      \
    void* _reserved;                                                                                         \
    HRESULT (*QueryInterface)(void* self, REFIID iid, LPVOID* result);                                       \
    ULONG (*AddRef)(void* self);                                                                             \
    ULONG (*Release)(void* self)

struct IUnknownVTbl {
    IUNKNOWN_C_GUTS;
};

#define IUnknownUUID                                                                                         \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorSystemDefault, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,      \
                                   0x00, 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46)
