// System calls that change an item outside the volume. Each of them fails or changes only a temporary
// directory.

#include "PlugIn.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/syscall.h>
#include <unistd.h>

namespace plugin {

void MakeRawCalls() {
    if (!Is("RawCreatingCalls") && !Is("RawPathCalls") && !Is("RawFolderCalls")) return;
    std::string folder = "/tmp/xcodhost-corpus-XXXXXX";
    if (!mkdtemp(folder.data())) return;
    const std::string missing = folder + "/missing/x";
    const char *const old = folder.c_str(), *const made = missing.c_str();
    constexpr long number = 0700; // a mode, a flag to create a file, or no valid address
    constexpr int here = AT_FDCWD;
    if (Is("RawCreatingCalls")) {
        for (const long call : {SYS_open, SYS_creat, SYS_mkdir, SYS_mknod}) syscall(call, made, number, 0);
        for (const long call : {SYS_rename, SYS_link, SYS_symlink}) syscall(call, old, made);
        for (const long call : {SYS_openat, SYS_mkdirat, SYS_mknodat}) syscall(call, here, made, number, 0);
        for (const long call : {SYS_renameat, SYS_renameat2, SYS_linkat})
            syscall(call, here, old, here, made, 0);
        syscall(SYS_symlinkat, old, here, made);
    }
    if (Is("RawPathCalls")) {
        for (const long call : {SYS_creat, SYS_mkdir, SYS_mknod, SYS_unlink, SYS_chmod, SYS_chown, SYS_lchown,
                                SYS_utime, SYS_utimes, SYS_truncate, SYS_setxattr, SYS_lsetxattr,
                                SYS_removexattr, SYS_lremovexattr, SYS_rmdir})
            syscall(call, old, number, number, 0, 0);
    }
    if (Is("RawFolderCalls")) {
        for (const long call :
             {SYS_openat, SYS_unlinkat, SYS_fchmodat, SYS_fchownat, SYS_utimensat, SYS_mkdirat})
            syscall(call, here, old, number, number, 0);
        for (const long call : {SYS_rename, SYS_link, SYS_symlink}) syscall(call, old, "missing/y");
        const int opened = open(old, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (const int from : {here, opened}) syscall(SYS_mkdirat, from, "missing/x", number);
        for (const long call : {SYS_fchmod, SYS_fchown, SYS_fsetxattr, SYS_fremovexattr})
            syscall(call, opened, number, number, 0, 0);
        close(opened);
    }
    std::filesystem::remove_all(folder);
}

} // namespace plugin
