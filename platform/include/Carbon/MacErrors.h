#pragma once

/// The result codes that this layer returns. permErr stands for the errno values EPERM and EACCES.

#include <MacTypes.h>

enum : OSErr {
    dskFulErr = -34,
    ioErr = -36,
    bdNamErr = -37,
    tmfoErr = -42,
    fnfErr = -43,
    wPrErr = -44,
    fBsyErr = -47,
    dupFNErr = -48,
    paramErr = -50,
    permErr = -54,
    memFullErr = -108,
    memWZErr = -111,
    procNotFound = -600,
    diffVolErr = -1303,
    errFSBadFSRef = -1401,
    errFSBadInfoBitmap = -1405,
    errFSNotAFolder = -1407,
    errFSNameTooLong = -1410,
    errFSQuotaExceeded = -1425,
    errFSOperationNotSupported = -1426,
    errAECoercionFail = -1700,
    errAEDescNotFound = -1701,
    errAENotAEDesc = -1704,
    errAEEventNotHandled = -1708,
    errAENoSuchObject = -1728,
};
