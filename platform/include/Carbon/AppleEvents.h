#pragma once

/// Apple events: typed records sent to another program. The Finder is the only one that answers here, and
/// moving a file to the Trash the only thing that it does.

#include <MacTypes.h>

using DescType = FourCharCode;
using AEKeyword = FourCharCode;
using AEEventClass = FourCharCode;
using AEEventID = FourCharCode;
using AEReturnID = SInt16;
using AETransactionID = SInt32;
using AESendMode = SInt32;
using AESendPriority = SInt16;
using AEDataStorage = struct OpaqueAEDataStorageType*;

#pragma pack(push, 2)
struct AEDesc {
    DescType descriptorType;
    AEDataStorage dataHandle;
};
struct EventRecord;
#pragma pack(pop)
using AEAddressDesc = AEDesc;
using AppleEvent = AEDesc;
using AEIdleUPP = Boolean (*)(EventRecord*, SInt32* sleepTime, void** mouseRegion);
using AEFilterUPP = Boolean (*)(EventRecord*, SInt32 returnID, AETransactionID, const AEAddressDesc* sender);

enum : DescType {
    typeNull = 'null',
    typeType = 'type',
    typeFSRef = 'fsrf',
    typeApplSignature = 'sign',
    typeObjectSpecifier = 'obj ',
    typeProperty = 'prop',
    formPropertyID = 'prop',
    cObject = 'cobj',
};
enum : AEKeyword {
    keyDirectObject = '----',
    keyAEInsertHere = 'insh',
    keyErrorNumber = 'errn',
};
enum : AEEventClass { kAECoreSuite = 'core' };
enum : AEEventID { kAEMove = 'move' };
enum : AEReturnID { kAutoGenerateReturnID = -1 };
enum : AETransactionID { kAnyTransactionID = 0 };
enum : AESendMode { kAEWaitReply = 3 };
enum : AESendPriority { kAENormalPriority = 0 };
enum : long { kAEDefaultTimeout = -1 };

MACPLATFORM_C_BEGIN

/// Each of these copies what it is given. The caller disposes of what it gets.
OSErr AECreateDesc(DescType, const void* data, Size, AEDesc* result);
OSErr AECreateAppleEvent(AEEventClass, AEEventID, const AEAddressDesc* target, AEReturnID, AETransactionID,
                         AppleEvent* result);
OSErr AEPutParamDesc(AppleEvent*, AEKeyword, const AEDesc*);
/// noErr says only that a reply came; the Finder's own failure is the reply's 'errn'.
OSErr AESend(const AppleEvent*, AppleEvent* reply, AESendMode, AESendPriority, long timeoutInTicks, AEIdleUPP,
             AEFilterUPP);
/// Leaves a null descriptor, so that a second call is harmless.
OSErr AEDisposeDesc(AEDesc*);

MACPLATFORM_C_END
