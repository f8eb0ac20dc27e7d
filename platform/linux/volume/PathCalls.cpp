// This file defines the interposed path calls of the C library. Programs that are linked with the platform,
// and the bundles that they load, call these functions instead of the functions of the C library. Paths of
// the startup volume are redirected. All other paths are passed on unchanged.
//
// These calls are not interposed: raw system calls, exec, dlopen, fts, glob and getcwd. getcwd returns a path
// of this machine.
//
// Assembler labels set the symbols of the functions. Their C++ names are in the namespace `interposed`, so
// that the functions need not have exactly the types that the C library declares. The labels also keep the
// variants for 32-bit and 64-bit file offsets separate with every compiler setting.

#include "PathCallKinds.h"

#include <cstdint>

using namespace macplatform;

namespace {

constexpr LastLink kFollow = LastLink::kFollow, kNoFollow = LastLink::kNoFollow;

LastLink linkOf(int flags) { return flags & AT_SYMLINK_NOFOLLOW ? kNoFollow : kFollow; }
LastLink linkedLink(int flags) { return flags & AT_SYMLINK_FOLLOW ? kFollow : kNoFollow; }
LastLink openLink(int flags) {
    return (flags & O_NOFOLLOW) || ((flags & O_CREAT) && (flags & O_EXCL)) ? kNoFollow : kFollow;
}

} // namespace

#pragma GCC visibility push(default)

/// Defines the function SYMBOL of the C library. PARAMETERS is its list of parameters in parentheses. The
/// last argument is the call, in which `next` is the definition of the C library. Only a macro can define
/// functions with these symbols and lists of parameters.
#define PATH_CALL(RESULT, SYMBOL, PARAMETERS, ...)                                                           \
    namespace interposed {                                                                                   \
    RESULT SYMBOL PARAMETERS __asm__(#SYMBOL);                                                               \
    }                                                                                                        \
    RESULT interposed::SYMBOL PARAMETERS {                                                                   \
        static const auto next = NextDefinition<RESULT PARAMETERS>(#SYMBOL);                                 \
        return __VA_ARGS__;                                                                                  \
    }

// Calls that open files and directories.
PATH_CALL(int, open, (const char* path, int flags, OptionalMode mode),
          OpeningCall("open", openLink(flags), next, path, flags, mode))
PATH_CALL(int, open64, (const char* path, int flags, OptionalMode mode),
          OpeningCall("open", openLink(flags), next, path, flags, mode))
PATH_CALL(int, openat, (int folder, const char* path, int flags, OptionalMode mode),
          OpeningCall("openat", openLink(flags), next, folder, path, flags, mode))
PATH_CALL(int, openat64, (int folder, const char* path, int flags, OptionalMode mode),
          OpeningCall("openat", openLink(flags), next, folder, path, flags, mode))
PATH_CALL(int, __open_2, (const char* path, int flags),
          OpeningCall("open", openLink(flags), next, path, flags))
PATH_CALL(int, __open64_2, (const char* path, int flags),
          OpeningCall("open", openLink(flags), next, path, flags))
PATH_CALL(int, __openat_2, (int folder, const char* path, int flags),
          OpeningCall("openat", openLink(flags), next, folder, path, flags))
PATH_CALL(int, __openat64_2, (int folder, const char* path, int flags),
          OpeningCall("openat", openLink(flags), next, folder, path, flags))
PATH_CALL(int, creat, (const char* path, unsigned mode), ItemCall("creat", kFollow, next, path, mode))
PATH_CALL(int, creat64, (const char* path, unsigned mode), ItemCall("creat", kFollow, next, path, mode))
PATH_CALL(void*, fopen, (const char* path, const char* mode), OpeningCall("fopen", kFollow, next, path, mode))
PATH_CALL(void*, fopen64, (const char* path, const char* mode),
          OpeningCall("fopen", kFollow, next, path, mode))
PATH_CALL(void*, freopen, (const char* path, const char* mode, void* file),
          OpeningCall("freopen", kFollow, next, path, mode, file))
PATH_CALL(void*, freopen64, (const char* path, const char* mode, void* file),
          OpeningCall("freopen", kFollow, next, path, mode, file))
PATH_CALL(void*, opendir, (const char* path), ItemCall("opendir", kFollow, next, path))
PATH_CALL(int, scandir, (const char* path, void* list, void* filter, void* compare),
          ItemCall("scandir", kFollow, next, path, list, filter, compare))
PATH_CALL(int, scandir64, (const char* path, void* list, void* filter, void* compare),
          ItemCall("scandir", kFollow, next, path, list, filter, compare))

// Calls that query an item.
PATH_CALL(int, stat, (const char* path, void* status), ItemCall("stat", kFollow, next, path, status))
PATH_CALL(int, stat64, (const char* path, void* status), ItemCall("stat", kFollow, next, path, status))
PATH_CALL(int, lstat, (const char* path, void* status), ItemCall("lstat", kNoFollow, next, path, status))
PATH_CALL(int, lstat64, (const char* path, void* status), ItemCall("lstat", kNoFollow, next, path, status))
PATH_CALL(int, fstatat, (int folder, const char* path, void* status, int flags),
          ItemCall("fstatat", linkOf(flags), next, folder, path, status, flags))
PATH_CALL(int, fstatat64, (int folder, const char* path, void* status, int flags),
          ItemCall("fstatat", linkOf(flags), next, folder, path, status, flags))
PATH_CALL(int, statx, (int folder, const char* path, int flags, unsigned mask, void* status),
          ItemCall("statx", linkOf(flags), next, folder, path, flags, mask, status))
PATH_CALL(int, statfs, (const char* path, void* status), ItemCall("statfs", kFollow, next, path, status))
PATH_CALL(int, statfs64, (const char* path, void* status), ItemCall("statfs", kFollow, next, path, status))
PATH_CALL(int, statvfs, (const char* path, void* status), ItemCall("statvfs", kFollow, next, path, status))
PATH_CALL(int, statvfs64, (const char* path, void* status), ItemCall("statvfs", kFollow, next, path, status))
PATH_CALL(int, access, (const char* path, int mode), ItemCall("access", kFollow, next, path, mode))
PATH_CALL(int, euidaccess, (const char* path, int mode), ItemCall("euidaccess", kFollow, next, path, mode))
PATH_CALL(int, eaccess, (const char* path, int mode), ItemCall("eaccess", kFollow, next, path, mode))
PATH_CALL(int, faccessat, (int folder, const char* path, int mode, int flags),
          ItemCall("faccessat", linkOf(flags), next, folder, path, mode, flags))
PATH_CALL(ssize_t, readlink, (const char* path, void* buffer, std::size_t size),
          ItemCall("readlink", kNoFollow, next, path, buffer, size))
PATH_CALL(ssize_t, readlinkat, (int folder, const char* path, void* buffer, std::size_t size),
          ItemCall("readlinkat", kNoFollow, next, folder, path, buffer, size))
PATH_CALL(ssize_t, __readlink_chk, (const char* path, void* buffer, std::size_t size, std::size_t capacity),
          ItemCall("readlink", kNoFollow, next, path, buffer, size, capacity))
PATH_CALL(ssize_t, __readlinkat_chk,
          (int folder, const char* path, void* buffer, std::size_t size, std::size_t capacity),
          ItemCall("readlinkat", kNoFollow, next, folder, path, buffer, size, capacity))

// These functions are called by programs that were built with older C libraries. Their first parameter is the
// version of the structure of the result.
PATH_CALL(int, __xstat, (int version, const char* path, void* status),
          ItemCall("stat", kFollow, next, version, path, status))
PATH_CALL(int, __xstat64, (int version, const char* path, void* status),
          ItemCall("stat", kFollow, next, version, path, status))
PATH_CALL(int, __lxstat, (int version, const char* path, void* status),
          ItemCall("lstat", kNoFollow, next, version, path, status))
PATH_CALL(int, __lxstat64, (int version, const char* path, void* status),
          ItemCall("lstat", kNoFollow, next, version, path, status))
PATH_CALL(int, __fxstatat, (int version, int folder, const char* path, void* status, int flags),
          ItemCall("fstatat", linkOf(flags), next, version, folder, path, status, flags))
PATH_CALL(int, __fxstatat64, (int version, int folder, const char* path, void* status, int flags),
          ItemCall("fstatat", linkOf(flags), next, version, folder, path, status, flags))
PATH_CALL(int, __xmknod, (int version, const char* path, unsigned mode, dev_t* device),
          ItemCall("mknod", kNoFollow, next, version, path, mode, device))

// Calls that change the directory tree.
PATH_CALL(int, mkdir, (const char* path, unsigned mode), ItemCall("mkdir", kNoFollow, next, path, mode))
PATH_CALL(int, mkdirat, (int folder, const char* path, unsigned mode),
          ItemCall("mkdirat", kNoFollow, next, folder, path, mode))
PATH_CALL(int, mkfifo, (const char* path, unsigned mode), ItemCall("mkfifo", kNoFollow, next, path, mode))
PATH_CALL(int, mkfifoat, (int folder, const char* path, unsigned mode),
          ItemCall("mkfifoat", kNoFollow, next, folder, path, mode))
PATH_CALL(int, mknod, (const char* path, unsigned mode, dev_t device),
          ItemCall("mknod", kNoFollow, next, path, mode, device))
PATH_CALL(int, mknodat, (int folder, const char* path, unsigned mode, dev_t device),
          ItemCall("mknodat", kNoFollow, next, folder, path, mode, device))
PATH_CALL(int, rmdir, (const char* path), ItemCall("rmdir", kNoFollow, next, path))
PATH_CALL(int, unlink, (const char* path), ItemCall("unlink", kNoFollow, next, path))
PATH_CALL(int, unlinkat, (int folder, const char* path, int flags),
          ItemCall("unlinkat", kNoFollow, next, folder, path, flags))
PATH_CALL(int, remove, (const char* path), ItemCall("remove", kNoFollow, next, path))
PATH_CALL(int, chdir, (const char* path), ItemCall("chdir", kFollow, next, path))

// Calls that change an item.
PATH_CALL(int, chmod, (const char* path, unsigned mode), ItemCall("chmod", kFollow, next, path, mode))
PATH_CALL(int, fchmodat, (int folder, const char* path, unsigned mode, int flags),
          ItemCall("fchmodat", linkOf(flags), next, folder, path, mode, flags))
PATH_CALL(int, chown, (const char* path, unsigned user, unsigned group),
          ItemCall("chown", kFollow, next, path, user, group))
PATH_CALL(int, lchown, (const char* path, unsigned user, unsigned group),
          ItemCall("lchown", kNoFollow, next, path, user, group))
PATH_CALL(int, fchownat, (int folder, const char* path, unsigned user, unsigned group, int flags),
          ItemCall("fchownat", linkOf(flags), next, folder, path, user, group, flags))
PATH_CALL(int, utime, (const char* path, const void* times), ItemCall("utime", kFollow, next, path, times))
PATH_CALL(int, utimes, (const char* path, const void* times), ItemCall("utimes", kFollow, next, path, times))
PATH_CALL(int, lutimes, (const char* path, const void* times),
          ItemCall("lutimes", kNoFollow, next, path, times))
PATH_CALL(int, utimensat, (int folder, const char* path, const void* times, int flags),
          ItemCall("utimensat", linkOf(flags), next, folder, path, times, flags))
PATH_CALL(int, truncate, (const char* path, long length), ItemCall("truncate", kFollow, next, path, length))
PATH_CALL(int, truncate64, (const char* path, std::int64_t length),
          ItemCall("truncate", kFollow, next, path, length))
PATH_CALL(ssize_t, getxattr, (const char* path, const char* name, void* value, std::size_t size),
          ItemCall("getxattr", kFollow, next, path, name, value, size))
PATH_CALL(ssize_t, lgetxattr, (const char* path, const char* name, void* value, std::size_t size),
          ItemCall("lgetxattr", kNoFollow, next, path, name, value, size))
PATH_CALL(int, setxattr, (const char* path, const char* name, const void* value, std::size_t size, int flags),
          ItemCall("setxattr", kFollow, next, path, name, value, size, flags))
PATH_CALL(int, lsetxattr,
          (const char* path, const char* name, const void* value, std::size_t size, int flags),
          ItemCall("lsetxattr", kNoFollow, next, path, name, value, size, flags))
PATH_CALL(ssize_t, listxattr, (const char* path, void* names, std::size_t size),
          ItemCall("listxattr", kFollow, next, path, names, size))
PATH_CALL(ssize_t, llistxattr, (const char* path, void* names, std::size_t size),
          ItemCall("llistxattr", kNoFollow, next, path, names, size))
PATH_CALL(int, removexattr, (const char* path, const char* name),
          ItemCall("removexattr", kFollow, next, path, name))
PATH_CALL(int, lremovexattr, (const char* path, const char* name),
          ItemCall("lremovexattr", kNoFollow, next, path, name))

// These functions are called by 32-bit programs with 64-bit times.
#if __WORDSIZE == 32
PATH_CALL(int, __stat64_time64, (const char* path, void* status),
          ItemCall("stat", kFollow, next, path, status))
PATH_CALL(int, __lstat64_time64, (const char* path, void* status),
          ItemCall("lstat", kNoFollow, next, path, status))
PATH_CALL(int, __fstatat64_time64, (int folder, const char* path, void* status, int flags),
          ItemCall("fstatat", linkOf(flags), next, folder, path, status, flags))
PATH_CALL(int, __utime64, (const char* path, const void* times),
          ItemCall("utime", kFollow, next, path, times))
PATH_CALL(int, __utimes64, (const char* path, const void* times),
          ItemCall("utimes", kFollow, next, path, times))
PATH_CALL(int, __lutimes64, (const char* path, const void* times),
          ItemCall("lutimes", kNoFollow, next, path, times))
PATH_CALL(int, __utimensat64, (int folder, const char* path, const void* times, int flags),
          ItemCall("utimensat", linkOf(flags), next, folder, path, times, flags))
#endif

// Calls that walk a directory tree.
PATH_CALL(int, ftw, (const char* path, void* visit, int descriptors),
          WalkingCall("ftw", next, path, visit, descriptors))
PATH_CALL(int, ftw64, (const char* path, void* visit, int descriptors),
          WalkingCall("ftw", next, path, visit, descriptors))
PATH_CALL(int, nftw, (const char* path, void* visit, int descriptors, int flags),
          WalkingCall("nftw", next, path, visit, descriptors, flags))
PATH_CALL(int, nftw64, (const char* path, void* visit, int descriptors, int flags),
          WalkingCall("nftw", next, path, visit, descriptors, flags))

// Calls with two paths.
PATH_CALL(int, rename, (const char* from, const char* to), TwoPathCall("rename", kNoFollow, next, from, to))
PATH_CALL(int, renameat, (int fromFolder, const char* from, int toFolder, const char* to),
          TwoPathCall("renameat", kNoFollow, next, fromFolder, from, toFolder, to))
PATH_CALL(int, renameat2, (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags),
          TwoPathCall("renameat2", kNoFollow, next, fromFolder, from, toFolder, to, flags))
PATH_CALL(int, link, (const char* from, const char* to), TwoPathCall("link", kNoFollow, next, from, to))
PATH_CALL(int, linkat, (int fromFolder, const char* from, int toFolder, const char* to, int flags),
          TwoPathCall("linkat", linkedLink(flags), next, fromFolder, from, toFolder, to, flags))
PATH_CALL(int, symlink, (const char* target, const char* path),
          SymbolicLinkCall("symlink", next, target, path))
PATH_CALL(int, symlinkat, (const char* target, int folder, const char* path),
          SymbolicLinkCall("symlinkat", next, target, folder, path))

// Calls that resolve a path.
PATH_CALL(char*, realpath, (const char* path, char* resolved), ResolvingCall(next, path, resolved))
PATH_CALL(char*, __realpath_chk, (const char* path, char* resolved, std::size_t capacity),
          ResolvingCall(next, path, resolved, capacity))

// Calls that generate the name of a temporary item.
PATH_CALL(int, mkstemp, (char* path), TemporaryCall("mkstemp", 0, next, path))
PATH_CALL(int, mkstemp64, (char* path), TemporaryCall("mkstemp", 0, next, path))
PATH_CALL(int, mkostemp, (char* path, int flags), TemporaryCall("mkostemp", 0, next, path, flags))
PATH_CALL(int, mkostemp64, (char* path, int flags), TemporaryCall("mkostemp", 0, next, path, flags))
PATH_CALL(int, mkstemps, (char* path, int suffix), TemporaryCall("mkstemps", suffix, next, path, suffix))
PATH_CALL(int, mkstemps64, (char* path, int suffix), TemporaryCall("mkstemps", suffix, next, path, suffix))
PATH_CALL(int, mkostemps, (char* path, int suffix, int flags),
          TemporaryCall("mkostemps", suffix, next, path, suffix, flags))
PATH_CALL(int, mkostemps64, (char* path, int suffix, int flags),
          TemporaryCall("mkostemps", suffix, next, path, suffix, flags))
PATH_CALL(char*, mkdtemp, (char* path), TemporaryCall("mkdtemp", 0, next, path))

#pragma GCC visibility pop
