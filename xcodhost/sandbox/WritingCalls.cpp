#include "WritingCalls.h"

#include <iterator>
#include <sys/syscall.h>

namespace xcodhost {

namespace {

using Call = WritingCall;

// Not every processor has all calls. Each processor has a call for each kind of change.
constexpr Call kCalls[] = {
#ifdef SYS_open
    Call(SYS_open, "open").Path(0).OpenFlags(1),
    Call(SYS_creat, "creat").Path(0).CreatesOrChanges(),
    Call(SYS_mkdir, "mkdir").Path(0).Creates(),
    Call(SYS_mknod, "mknod").Path(0).Creates(),
    Call(SYS_rmdir, "rmdir").Path(0),
    Call(SYS_unlink, "unlink").Path(0),
    Call(SYS_rename, "rename").Path(0).NewPath(1),
    Call(SYS_link, "link").Path(1).Creates(),
    Call(SYS_symlink, "symlink").Path(1).Creates(),
    Call(SYS_chmod, "chmod").Path(0),
    Call(SYS_chown, "chown").Path(0),
    Call(SYS_lchown, "lchown").Path(0),
    Call(SYS_utime, "utime").Path(0),
    Call(SYS_utimes, "utimes").Path(0),
#endif
#ifdef SYS_chown32
    Call(SYS_chown32, "chown32").Path(0),
    Call(SYS_lchown32, "lchown32").Path(0),
    Call(SYS_fchown32, "fchown32").Descriptor(0),
    Call(SYS_truncate64, "truncate64").Path(0),
    Call(SYS_utimensat_time64, "utimensat_time64").PathIn(0, 1),
#endif
    Call(SYS_openat, "openat").PathIn(0, 1).OpenFlags(2),
    Call(SYS_mkdirat, "mkdirat").PathIn(0, 1).Creates(),
    Call(SYS_mknodat, "mknodat").PathIn(0, 1).Creates(),
    Call(SYS_unlinkat, "unlinkat").PathIn(0, 1),
#ifdef SYS_renameat
    Call(SYS_renameat, "renameat").PathIn(0, 1).NewPathIn(2, 3),
#endif
    Call(SYS_renameat2, "renameat2").PathIn(0, 1).NewPathIn(2, 3),
    Call(SYS_linkat, "linkat").PathIn(2, 3).Creates(),
    Call(SYS_symlinkat, "symlinkat").PathIn(1, 2).Creates(),
    Call(SYS_truncate, "truncate").Path(0),
    Call(SYS_fchmod, "fchmod").Descriptor(0),
    Call(SYS_fchmodat, "fchmodat").PathIn(0, 1),
    Call(SYS_fchown, "fchown").Descriptor(0),
    Call(SYS_fchownat, "fchownat").PathIn(0, 1),
    Call(SYS_utimensat, "utimensat").PathIn(0, 1),
    Call(SYS_setxattr, "setxattr").Path(0),
    Call(SYS_lsetxattr, "lsetxattr").Path(0),
    Call(SYS_fsetxattr, "fsetxattr").Descriptor(0),
    Call(SYS_removexattr, "removexattr").Path(0),
    Call(SYS_lremovexattr, "lremovexattr").Path(0),
    Call(SYS_fremovexattr, "fremovexattr").Descriptor(0),
};

} // namespace

const std::vector<WritingCall>& WritingCalls() {
    static const std::vector<WritingCall> calls(std::begin(kCalls), std::end(kCalls));
    return calls;
}

} // namespace xcodhost
