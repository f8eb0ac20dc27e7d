#include "ResultCodes.h"

#include <Carbon/MacErrors.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace macplatform {

namespace {

struct Row {
    int error;
    OSErr code;
};
// clang-format off
constexpr Row kRows[] = {
    {0, noErr},
    {ENOSPC, dskFulErr},
    {EILSEQ, bdNamErr},
    {EMFILE, tmfoErr},
    {ENFILE, tmfoErr},
    {ENOENT, fnfErr},
    {ELOOP, fnfErr},
    {EROFS, wPrErr},
    {EBUSY, fBsyErr},
    {ENOTEMPTY, fBsyErr},
    {EEXIST, dupFNErr},
    {EINVAL, paramErr},
    {EPERM, permErr},
    {EACCES, permErr},
    {ENOMEM, memFullErr},
    {EXDEV, diffVolErr},
    {ENOTDIR, errFSNotAFolder},
    {ENAMETOOLONG, errFSNameTooLong},
    {EDQUOT, errFSQuotaExceeded},
    {ENOTSUP, errFSOperationNotSupported},
};
// clang-format on

} // namespace

OSErr ResultCode(int error) {
    const auto* const row = std::find_if(std::begin(kRows), std::end(kRows),
                                         [error](const Row& one) { return one.error == error; });
    return row == std::end(kRows) ? OSErr{ioErr} : row->code;
}

} // namespace macplatform
