#include "ResultCodes.h"

#include <Carbon/MacErrors.h>

#include <cerrno>

namespace macplatform {

OSErr ResultCode(int error) {
    switch (error) {
    case 0:
        return noErr;
    case ENOSPC:
        return dskFulErr;
    case EILSEQ:
        return bdNamErr;
    case EMFILE:
    case ENFILE:
        return tmfoErr;
    case ENOENT:
    case ELOOP:
        return fnfErr;
    case EROFS:
        return wPrErr;
    case EBUSY:
    case ENOTEMPTY:
        return fBsyErr;
    case EEXIST:
        return dupFNErr;
    case EINVAL:
        return paramErr;
    case EPERM:
    case EACCES:
        return permErr;
    case ENOMEM:
        return memFullErr;
    case EXDEV:
        return diffVolErr;
    case ENOTDIR:
        return errFSNotAFolder;
    case ENAMETOOLONG:
        return errFSNameTooLong;
    case EDQUOT:
        return errFSQuotaExceeded;
    case ENOTSUP:
        return errFSOperationNotSupported;
    default:
        return ioErr;
    }
}

} // namespace macplatform
