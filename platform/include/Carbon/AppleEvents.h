#pragma once

/// Apple events: typed records that are sent to another program. In this layer the only receiver is the
/// Finder, and the only supported event moves a file to the Trash.

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

/// Each of the three functions below copies its inputs. The caller disposes of the result.
OSErr AECreateDesc(DescType, const void* data, Size, AEDesc* result);
OSErr AECreateAppleEvent(AEEventClass, AEEventID, const AEAddressDesc* target, AEReturnID, AETransactionID,
                         AppleEvent* result);
OSErr AEPutParamDesc(AppleEvent*, AEKeyword, const AEDesc*);
/// Sends the event. The result noErr means only that a reply arrived. The Finder reports its own failure in
/// the parameter 'errn' of the reply.
OSErr AESend(const AppleEvent*, AppleEvent* reply, AESendMode, AESendPriority, long timeoutInTicks, AEIdleUPP,
             AEFilterUPP);
/// Frees the data and sets the descriptor to null. A second call has no effect.
OSErr AEDisposeDesc(AEDesc*);

MACPLATFORM_C_END
