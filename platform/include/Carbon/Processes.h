#pragma once

/// The Process Manager: information about the current process.

#include <Carbon/Files.h>

#pragma pack(push, 2)
struct ProcessSerialNumber {
    UInt32 highLongOfPSN;
    UInt32 lowLongOfPSN;
};
/// Information about a process. The caller sets `processInfoLength` to the size of the record in bytes. The
/// caller may set `processName` and `processAppSpec` to buffers for the name and the FSSpec of the
/// application, or to null.
struct ProcessInfoRec {
    UInt32 processInfoLength;
    StringPtr processName;
    ProcessSerialNumber processNumber;
    UInt32 processType;
    OSType processSignature;
    UInt32 processMode;
    Ptr processLocation;
    UInt32 processSize;
    UInt32 processFreeMem;
    ProcessSerialNumber processLauncher;
    UInt32 processLaunchDate;
    UInt32 processActiveTime;
    FSSpec* processAppSpec;
};
#pragma pack(pop)

enum : UInt32 { kNoProcess = 0, kSystemProcess = 1, kCurrentProcess = 2 };

MACPLATFORM_C_BEGIN

/// Writes information about the current process. Returns procNotFound for any other process. The name is the
/// unchanged file name of the executable, as a Pascal string of at most 255 bytes.
OSErr GetProcessInformation(const ProcessSerialNumber*, ProcessInfoRec*);

MACPLATFORM_C_END
