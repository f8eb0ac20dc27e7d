#pragma once

/// The C declaration of IUnknown, the interface at the beginning of every plug-in instance.

#include <CoreFoundation/CFUUID.h>

using HRESULT = SInt32;
using ULONG = UInt32;
using LPVOID = void*;
using REFIID = CFUUIDBytes;

// The values of the Mac. Other systems use other values.
#define S_OK (static_cast<HRESULT>(0x00000000))
#define E_NOINTERFACE (static_cast<HRESULT>(0x80000004UL))

/// The first members of every function table.
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
