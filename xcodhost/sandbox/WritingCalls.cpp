#include "WritingCalls.h"

#include <sys/syscall.h>

namespace xcodhost {

const std::vector<WritingCall>& WritingCalls() {
    // What a processor's convention lacks, it has another call for.
    static const std::vector<WritingCall> calls = {
#ifdef SYS_open
        {SYS_open, "open", {-1, 0}, {}, 1},
        {SYS_creat, "creat", {-1, 0}},
        {SYS_mkdir, "mkdir", {-1, 0}, {}, -1, true},
        {SYS_mknod, "mknod", {-1, 0}, {}, -1, true},
        {SYS_rmdir, "rmdir", {-1, 0}},
        {SYS_unlink, "unlink", {-1, 0}},
        {SYS_rename, "rename", {-1, 0}, {-1, 1}},
        {SYS_link, "link", {-1, 1}, {}, -1, true},
        {SYS_symlink, "symlink", {-1, 1}, {}, -1, true},
        {SYS_chmod, "chmod", {-1, 0}},
        {SYS_chown, "chown", {-1, 0}},
        {SYS_lchown, "lchown", {-1, 0}},
        {SYS_utime, "utime", {-1, 0}},
        {SYS_utimes, "utimes", {-1, 0}},
#endif
#ifdef SYS_chown32
        {SYS_chown32, "chown32", {-1, 0}},
        {SYS_lchown32, "lchown32", {-1, 0}},
        {SYS_fchown32, "fchown32", {0, -1}},
        {SYS_truncate64, "truncate64", {-1, 0}},
        {SYS_utimensat_time64, "utimensat_time64", {0, 1}},
#endif
        {SYS_openat, "openat", {0, 1}, {}, 2},
        {SYS_mkdirat, "mkdirat", {0, 1}, {}, -1, true},
        {SYS_mknodat, "mknodat", {0, 1}, {}, -1, true},
        {SYS_unlinkat, "unlinkat", {0, 1}},
#ifdef SYS_renameat
        {SYS_renameat, "renameat", {0, 1}, {2, 3}},
#endif
        {SYS_renameat2, "renameat2", {0, 1}, {2, 3}},
        {SYS_linkat, "linkat", {2, 3}, {}, -1, true},
        {SYS_symlinkat, "symlinkat", {1, 2}, {}, -1, true},
        {SYS_truncate, "truncate", {-1, 0}},
        {SYS_fchmod, "fchmod", {0, -1}},
        {SYS_fchmodat, "fchmodat", {0, 1}},
        {SYS_fchown, "fchown", {0, -1}},
        {SYS_fchownat, "fchownat", {0, 1}},
        {SYS_utimensat, "utimensat", {0, 1}},
        {SYS_setxattr, "setxattr", {-1, 0}},
        {SYS_lsetxattr, "lsetxattr", {-1, 0}},
        {SYS_fsetxattr, "fsetxattr", {0, -1}},
        {SYS_removexattr, "removexattr", {-1, 0}},
        {SYS_lremovexattr, "lremovexattr", {-1, 0}},
        {SYS_fremovexattr, "fremovexattr", {0, -1}},
    };
    return calls;
}

} // namespace xcodhost
