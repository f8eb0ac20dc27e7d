#pragma once

#include <Carbon/Files.h>

#pragma pack(push, 2)
struct ProcessSerialNumber {
    UInt32 highLongOfPSN;
    UInt32 lowLongOfPSN;
};
/// The caller sets the length to the record's size; the name and the application's FSSpec are written through
/// when they are not null.
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

/// About the current process only (procNotFound else). The name is the executable's file name, its bytes as
/// they are, as a Pascal string of at most 255 bytes.
OSErr GetProcessInformation(const ProcessSerialNumber*, ProcessInfoRec*);

MACPLATFORM_C_END
