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

#include "PathCall.h"

#include <macplatform/FileDescriptor.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>

using namespace macplatform;

namespace {

constexpr LastLink kFollow = LastLink::kFollow, kNoFollow = LastLink::kNoFollow;

LastLink linkOf(int flags) { return flags & AT_SYMLINK_NOFOLLOW ? kNoFollow : kFollow; }
LastLink openLink(int flags) {
    return (flags & O_NOFOLLOW) || ((flags & O_CREAT) && (flags & O_EXCL)) ? kNoFollow : kFollow;
}

/// Returns the optional last argument of open, the mode, if the flags can create a file. Returns 0 otherwise.
unsigned optionalMode(int flags, va_list rest) {
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyser does not see the caller's va_start
    return flags & (O_CREAT | __O_TMPFILE) ? va_arg(rest, unsigned) : 0;
}

bool opensToRead(int flags) { return (flags & O_ACCMODE) == O_RDONLY; }
bool opensToRead(const char* mode) { return mode[0] == 'r' && !std::strchr(mode, '+'); }

/// Keeps a pipe open for writing during the lifetime of the object. If a bundle opens a path for reading and
/// the path is a pipe, the call therefore does not wait for a writer. The bundle then reads an empty file.
class PipeWriter {
public:
    template <typename Mode>
    PipeWriter(const char* hostPath, Mode mode)
        : writer(IsPipe(hostPath) && opensToRead(mode) ? Open(hostPath) : -1) {}

private:
    static bool IsPipe(const char* hostPath) {
        struct stat status {};
        return stat(hostPath, &status) == 0 && S_ISFIFO(status.st_mode);
    }
    static int Open(const char* hostPath) { return open(hostPath, O_RDWR | O_NONBLOCK | O_CLOEXEC); }

    FileDescriptor writer;
};

} // namespace

#pragma GCC visibility push(default)

/// Defines a call whose first parameter is the path. RESULT is the type of the result. FAILURE is the result
/// of a failed call. SYMBOL is the function of the C library. NAME is the name in the call log. LINK is
/// kFollow if the call follows a symbolic link at the end of the path, and kNoFollow otherwise. PARAMETERS
/// are the parameters after the path, each with COMMA before it. The last macro argument contains the names
/// of these parameters, each with COMMA before it.
#define PATH_CALL(RESULT, FAILURE, SYMBOL, NAME, LINK, PARAMETERS, ...)                                      \
    namespace interposed {                                                                                   \
    RESULT SYMBOL(const char* path PARAMETERS) __asm__(#SYMBOL);                                             \
    }                                                                                                        \
    RESULT interposed::SYMBOL(const char* path PARAMETERS) {                                                 \
        static const auto next = NextDefinition<RESULT(const char* PARAMETERS)>(#SYMBOL);                    \
        if (!IsRedirected(path)) return next(path __VA_ARGS__);                                              \
        const auto make = [&](const char* hostPath) { return next(hostPath __VA_ARGS__); };                  \
        return CallOnVolume<RESULT>(NAME, FAILURE, LINK, path, make, path __VA_ARGS__);                      \
    }

/// Defines a call whose first parameter is the descriptor of a directory and whose second parameter is the
/// path. Redirected paths are absolute, and the call ignores the directory for an absolute path.
#define PATH_CALL_AT(RESULT, FAILURE, SYMBOL, NAME, LINK, PARAMETERS, ...)                                   \
    namespace interposed {                                                                                   \
    RESULT SYMBOL(int folder, const char* path PARAMETERS) __asm__(#SYMBOL);                                 \
    }                                                                                                        \
    RESULT interposed::SYMBOL(int folder, const char* path PARAMETERS) {                                     \
        static const auto next = NextDefinition<RESULT(int, const char* PARAMETERS)>(#SYMBOL);               \
        if (!IsRedirected(path)) return next(folder, path __VA_ARGS__);                                      \
        const auto make = [&](const char* hostPath) { return next(folder, hostPath __VA_ARGS__); };          \
        return CallOnVolume<RESULT>(NAME, FAILURE, LINK, path, make, path __VA_ARGS__);                      \
    }

#define COMMA ,

// Calls that open files and directories.
#define OPEN_CALL(SYMBOL)                                                                                    \
    namespace interposed {                                                                                   \
    int SYMBOL(const char* path, int flags, ...) __asm__(#SYMBOL);                                           \
    }                                                                                                        \
    int interposed::SYMBOL(const char* path, int flags, ...) {                                               \
        static const auto next = NextDefinition<int(const char*, int, ...)>(#SYMBOL);                        \
        va_list rest;                                                                                        \
        va_start(rest, flags);                                                                               \
        const unsigned mode = optionalMode(flags, rest);                                                     \
        va_end(rest);                                                                                        \
        if (!IsRedirected(path)) return next(path, flags, mode);                                             \
        const auto make = [&](const char* hostPath) {                                                        \
            const PipeWriter writer(hostPath, flags);                                                        \
            return next(hostPath, flags, mode);                                                              \
        };                                                                                                   \
        return CallOnVolume<int>("open", -1, openLink(flags), path, make, path, flags);                      \
    }
#define OPENAT_CALL(SYMBOL)                                                                                  \
    namespace interposed {                                                                                   \
    int SYMBOL(int folder, const char* path, int flags, ...) __asm__(#SYMBOL);                               \
    }                                                                                                        \
    int interposed::SYMBOL(int folder, const char* path, int flags, ...) {                                   \
        static const auto next = NextDefinition<int(int, const char*, int, ...)>(#SYMBOL);                   \
        va_list rest;                                                                                        \
        va_start(rest, flags);                                                                               \
        const unsigned mode = optionalMode(flags, rest);                                                     \
        va_end(rest);                                                                                        \
        if (!IsRedirected(path)) return next(folder, path, flags, mode);                                     \
        const auto make = [&](const char* hostPath) {                                                        \
            const PipeWriter writer(hostPath, flags);                                                        \
            return next(folder, hostPath, flags, mode);                                                      \
        };                                                                                                   \
        return CallOnVolume<int>("openat", -1, openLink(flags), path, make, path, flags);                    \
    }
/// Defines the variant of open without a mode. Code that is compiled with _FORTIFY_SOURCE calls this variant.
#define OPEN_2_CALL(SYMBOL, PLAIN)                                                                           \
    namespace interposed {                                                                                   \
    int SYMBOL(const char* path, int flags) __asm__(#SYMBOL);                                                \
    }                                                                                                        \
    int interposed::SYMBOL(const char* path, int flags) { return interposed::PLAIN(path, flags, 0U); }
#define OPENAT_2_CALL(SYMBOL, PLAIN)                                                                         \
    namespace interposed {                                                                                   \
    int SYMBOL(int folder, const char* path, int flags) __asm__(#SYMBOL);                                    \
    }                                                                                                        \
    int interposed::SYMBOL(int folder, const char* path, int flags) {                                        \
        return interposed::PLAIN(folder, path, flags, 0U);                                                   \
    }
#define STREAM_CALL(SYMBOL, NAME, PARAMETERS, ...)                                                           \
    namespace interposed {                                                                                   \
    void* SYMBOL(const char* path, const char* mode PARAMETERS) __asm__(#SYMBOL);                            \
    }                                                                                                        \
    void* interposed::SYMBOL(const char* path, const char* mode PARAMETERS) {                                \
        static const auto next = NextDefinition<void*(const char*, const char* PARAMETERS)>(#SYMBOL);        \
        if (!IsRedirected(path)) return next(path, mode __VA_ARGS__);                                        \
        const auto make = [&](const char* hostPath) {                                                        \
            const PipeWriter writer(hostPath, mode);                                                         \
            return next(hostPath, mode __VA_ARGS__);                                                         \
        };                                                                                                   \
        return CallOnVolume<void*>(NAME, nullptr, kFollow, path, make, path, mode __VA_ARGS__);              \
    }
OPEN_CALL(open)
OPEN_CALL(open64)
OPENAT_CALL(openat)
OPENAT_CALL(openat64)
OPEN_2_CALL(__open_2, open)
OPEN_2_CALL(__open64_2, open64)
OPENAT_2_CALL(__openat_2, openat)
OPENAT_2_CALL(__openat64_2, openat64)
// PATH_CALL(result, failure, symbol, name in the call log, last link, parameters, arguments)
PATH_CALL(int, -1, creat, "creat", kFollow, COMMA unsigned mode, COMMA mode)
PATH_CALL(int, -1, creat64, "creat", kFollow, COMMA unsigned mode, COMMA mode)
// STREAM_CALL(symbol, name in the call log, parameters, arguments)
STREAM_CALL(fopen, "fopen", , )
STREAM_CALL(fopen64, "fopen", , )
STREAM_CALL(freopen, "freopen", COMMA void* file, COMMA file)
STREAM_CALL(freopen64, "freopen", COMMA void* file, COMMA file)
PATH_CALL(void*, nullptr, opendir, "opendir", kFollow, , )
PATH_CALL(int, -1, scandir, "scandir", kFollow, COMMA void* list COMMA void* filter COMMA void* compare,
          COMMA list COMMA filter COMMA compare)
PATH_CALL(int, -1, scandir64, "scandir", kFollow, COMMA void* list COMMA void* filter COMMA void* compare,
          COMMA list COMMA filter COMMA compare)

// Calls that query an item.
// PATH_CALL(result, failure, symbol, name in the call log, last link, parameters, arguments)
PATH_CALL(int, -1, stat, "stat", kFollow, COMMA void* status, COMMA status)
PATH_CALL(int, -1, stat64, "stat", kFollow, COMMA void* status, COMMA status)
PATH_CALL(int, -1, lstat, "lstat", kNoFollow, COMMA void* status, COMMA status)
PATH_CALL(int, -1, lstat64, "lstat", kNoFollow, COMMA void* status, COMMA status)
PATH_CALL_AT(int, -1, fstatat, "fstatat", linkOf(flags), COMMA void* status COMMA int flags,
             COMMA status COMMA flags)
PATH_CALL_AT(int, -1, fstatat64, "fstatat", linkOf(flags), COMMA void* status COMMA int flags,
             COMMA status COMMA flags)
PATH_CALL_AT(int, -1, statx, "statx", linkOf(flags), COMMA int flags COMMA unsigned mask COMMA void* status,
             COMMA flags COMMA mask COMMA status)
PATH_CALL(int, -1, statfs, "statfs", kFollow, COMMA void* status, COMMA status)
PATH_CALL(int, -1, statfs64, "statfs", kFollow, COMMA void* status, COMMA status)
PATH_CALL(int, -1, statvfs, "statvfs", kFollow, COMMA void* status, COMMA status)
PATH_CALL(int, -1, statvfs64, "statvfs", kFollow, COMMA void* status, COMMA status)
PATH_CALL(int, -1, access, "access", kFollow, COMMA int mode, COMMA mode)
PATH_CALL(int, -1, euidaccess, "euidaccess", kFollow, COMMA int mode, COMMA mode)
PATH_CALL(int, -1, eaccess, "eaccess", kFollow, COMMA int mode, COMMA mode)
PATH_CALL_AT(int, -1, faccessat, "faccessat", linkOf(flags), COMMA int mode COMMA int flags,
             COMMA mode COMMA flags)
PATH_CALL(ssize_t, -1, readlink, "readlink", kNoFollow, COMMA void* buffer COMMA std::size_t size,
          COMMA buffer COMMA size)
PATH_CALL_AT(ssize_t, -1, readlinkat, "readlinkat", kNoFollow, COMMA void* buffer COMMA std::size_t size,
             COMMA buffer COMMA size)
PATH_CALL(ssize_t, -1, __readlink_chk, "readlink", kNoFollow,
          COMMA void* buffer COMMA std::size_t size COMMA std::size_t capacity,
          COMMA buffer COMMA size COMMA capacity)
PATH_CALL_AT(ssize_t, -1, __readlinkat_chk, "readlinkat", kNoFollow,
             COMMA void* buffer COMMA std::size_t size COMMA std::size_t capacity,
             COMMA buffer COMMA size COMMA capacity)

// These functions are called by programs that were built with older C libraries. Their first parameter is the
// version of the structure of the result. PATH_CALL_AT passes this parameter on unchanged.
PATH_CALL_AT(int, -1, __xstat, "stat", kFollow, COMMA void* status, COMMA status)
PATH_CALL_AT(int, -1, __xstat64, "stat", kFollow, COMMA void* status, COMMA status)
PATH_CALL_AT(int, -1, __lxstat, "lstat", kNoFollow, COMMA void* status, COMMA status)
PATH_CALL_AT(int, -1, __lxstat64, "lstat", kNoFollow, COMMA void* status, COMMA status)
#define OLD_FSTATAT_CALL(SYMBOL)                                                                             \
    namespace interposed {                                                                                   \
    int SYMBOL(int version, int folder, const char* path, void* status, int flags) __asm__(#SYMBOL);         \
    }                                                                                                        \
    int interposed::SYMBOL(int version, int folder, const char* path, void* status, int flags) {             \
        static const auto next = NextDefinition<int(int, int, const char*, void*, int)>(#SYMBOL);            \
        if (!IsRedirected(path)) return next(version, folder, path, status, flags);                          \
        const auto make = [&](const char* hostPath) {                                                        \
            return next(version, folder, hostPath, status, flags);                                           \
        };                                                                                                   \
        return CallOnVolume<int>("fstatat", -1, linkOf(flags), path, make, path, status, flags);             \
    }
OLD_FSTATAT_CALL(__fxstatat)
OLD_FSTATAT_CALL(__fxstatat64)
PATH_CALL_AT(int, -1, __xmknod, "mknod", kNoFollow, COMMA unsigned mode COMMA dev_t* device,
             COMMA mode COMMA device)

// Calls that change the directory tree.
// PATH_CALL(result, failure, symbol, name in the call log, last link, parameters, arguments)
PATH_CALL(int, -1, mkdir, "mkdir", kNoFollow, COMMA unsigned mode, COMMA mode)
PATH_CALL_AT(int, -1, mkdirat, "mkdirat", kNoFollow, COMMA unsigned mode, COMMA mode)
PATH_CALL(int, -1, mkfifo, "mkfifo", kNoFollow, COMMA unsigned mode, COMMA mode)
PATH_CALL_AT(int, -1, mkfifoat, "mkfifoat", kNoFollow, COMMA unsigned mode, COMMA mode)
PATH_CALL(int, -1, mknod, "mknod", kNoFollow, COMMA unsigned mode COMMA dev_t device, COMMA mode COMMA device)
PATH_CALL_AT(int, -1, mknodat, "mknodat", kNoFollow, COMMA unsigned mode COMMA dev_t device,
             COMMA mode COMMA device)
PATH_CALL(int, -1, rmdir, "rmdir", kNoFollow, , )
PATH_CALL(int, -1, unlink, "unlink", kNoFollow, , )
PATH_CALL_AT(int, -1, unlinkat, "unlinkat", kNoFollow, COMMA int flags, COMMA flags)
PATH_CALL(int, -1, remove, "remove", kNoFollow, , )
PATH_CALL(int, -1, chdir, "chdir", kFollow, , )

// Calls that change an item.
// PATH_CALL(result, failure, symbol, name in the call log, last link, parameters, arguments)
PATH_CALL(int, -1, chmod, "chmod", kFollow, COMMA unsigned mode, COMMA mode)
PATH_CALL_AT(int, -1, fchmodat, "fchmodat", linkOf(flags), COMMA unsigned mode COMMA int flags,
             COMMA mode COMMA flags)
PATH_CALL(int, -1, chown, "chown", kFollow, COMMA unsigned user COMMA unsigned group, COMMA user COMMA group)
PATH_CALL(int, -1, lchown, "lchown", kNoFollow, COMMA unsigned user COMMA unsigned group,
          COMMA user COMMA group)
PATH_CALL_AT(int, -1, fchownat, "fchownat", linkOf(flags),
             COMMA unsigned user COMMA unsigned group COMMA int flags, COMMA user COMMA group COMMA flags)
PATH_CALL(int, -1, utime, "utime", kFollow, COMMA const void* times, COMMA times)
PATH_CALL(int, -1, utimes, "utimes", kFollow, COMMA const void* times, COMMA times)
PATH_CALL(int, -1, lutimes, "lutimes", kNoFollow, COMMA const void* times, COMMA times)
PATH_CALL_AT(int, -1, utimensat, "utimensat", linkOf(flags), COMMA const void* times COMMA int flags,
             COMMA times COMMA flags)
PATH_CALL(int, -1, truncate, "truncate", kFollow, COMMA long length, COMMA length)
PATH_CALL(int, -1, truncate64, "truncate", kFollow, COMMA std::int64_t length, COMMA length)
PATH_CALL(ssize_t, -1, getxattr, "getxattr", kFollow,
          COMMA const char* name COMMA void* value COMMA std::size_t size, COMMA name COMMA value COMMA size)
PATH_CALL(ssize_t, -1, lgetxattr, "lgetxattr", kNoFollow,
          COMMA const char* name COMMA void* value COMMA std::size_t size, COMMA name COMMA value COMMA size)
PATH_CALL(int, -1, setxattr, "setxattr", kFollow,
          COMMA const char* name COMMA const void* value COMMA std::size_t size COMMA int flags,
          COMMA name COMMA value COMMA size COMMA flags)
PATH_CALL(int, -1, lsetxattr, "lsetxattr", kNoFollow,
          COMMA const char* name COMMA const void* value COMMA std::size_t size COMMA int flags,
          COMMA name COMMA value COMMA size COMMA flags)
PATH_CALL(ssize_t, -1, listxattr, "listxattr", kFollow, COMMA void* names COMMA std::size_t size,
          COMMA names COMMA size)
PATH_CALL(ssize_t, -1, llistxattr, "llistxattr", kNoFollow, COMMA void* names COMMA std::size_t size,
          COMMA names COMMA size)
PATH_CALL(int, -1, removexattr, "removexattr", kFollow, COMMA const char* name, COMMA name)
PATH_CALL(int, -1, lremovexattr, "lremovexattr", kNoFollow, COMMA const char* name, COMMA name)

// These functions are called by 32-bit programs with 64-bit times.
#if __WORDSIZE == 32
PATH_CALL(int, -1, __stat64_time64, "stat", kFollow, COMMA void* status, COMMA status)
PATH_CALL(int, -1, __lstat64_time64, "lstat", kNoFollow, COMMA void* status, COMMA status)
PATH_CALL_AT(int, -1, __fstatat64_time64, "fstatat", linkOf(flags), COMMA void* status COMMA int flags,
             COMMA status COMMA flags)
PATH_CALL(int, -1, __utime64, "utime", kFollow, COMMA const void* times, COMMA times)
PATH_CALL(int, -1, __utimes64, "utimes", kFollow, COMMA const void* times, COMMA times)
PATH_CALL(int, -1, __lutimes64, "lutimes", kNoFollow, COMMA const void* times, COMMA times)
PATH_CALL_AT(int, -1, __utimensat64, "utimensat", linkOf(flags), COMMA const void* times COMMA int flags,
             COMMA times COMMA flags)
#endif

// Calls that walk a directory tree. They pass paths of this machine to the visitor function. Interposed calls
// do not change such paths.
#define WALK_CALL(SYMBOL, NAME, PARAMETERS, ...)                                                             \
    namespace interposed {                                                                                   \
    int SYMBOL(const char* path, void* visit PARAMETERS) __asm__(#SYMBOL);                                   \
    }                                                                                                        \
    int interposed::SYMBOL(const char* path, void* visit PARAMETERS) {                                       \
        static const auto next = NextDefinition<int(const char*, void* PARAMETERS)>(#SYMBOL);                \
        if (!IsRedirected(path)) return next(path, visit __VA_ARGS__);                                       \
        const auto make = [&](const char* hostPath) {                                                        \
            const BundleCodeScope visitor;                                                                   \
            return next(hostPath, visit __VA_ARGS__);                                                        \
        };                                                                                                   \
        return CallOnVolume<int>(NAME, -1, kFollow, path, make, path, visit __VA_ARGS__);                    \
    }
// WALK_CALL(symbol, name in the call log, parameters, arguments)
WALK_CALL(ftw, "ftw", COMMA int descriptors, COMMA descriptors)
WALK_CALL(ftw64, "ftw", COMMA int descriptors, COMMA descriptors)
WALK_CALL(nftw, "nftw", COMMA int descriptors COMMA int flags, COMMA descriptors COMMA flags)
WALK_CALL(nftw64, "nftw", COMMA int descriptors COMMA int flags, COMMA descriptors COMMA flags)

// Calls with two paths. The call log shows both paths. Each path is redirected separately.

namespace {

/// Makes a call with two paths on the startup volume. `fromLink` says whether a symbolic link at the end of
/// `from` is followed. A link at the end of `to` is not followed.
template <typename Make>
int callWithTwoPaths(const char* name, const char* from, const char* to, Make make,
                     LastLink fromLink = kNoFollow) try {
    const std::string hostFrom = HostPathOf(from, fromLink);
    const int unresolved = *from ? errno : ENOENT;
    const auto makeBoth = [&](const char* hostTo) {
        if (!hostFrom.empty()) return make(hostFrom.c_str(), hostTo);
        errno = unresolved;
        return -1;
    };
    return CallOnVolume<int>(name, -1, kNoFollow, to, makeBoth, from, to);
} catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return -1;
}

bool eitherIsRedirected(const char* from, const char* to) {
    return from && to && (IsRedirected(from) || IsRedirected(to));
}

} // namespace

namespace interposed {
int rename(const char* from, const char* to) __asm__("rename");
int renameat(int fromFolder, const char* from, int toFolder, const char* to) __asm__("renameat");
int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) __asm__("renameat2");
int link(const char* from, const char* to) __asm__("link");
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) __asm__("linkat");
int symlink(const char* target, const char* path) __asm__("symlink");
int symlinkat(const char* target, int folder, const char* path) __asm__("symlinkat");
char* realpath(const char* path, char* resolved) __asm__("realpath");
char* __realpath_chk(const char* path, char* resolved, std::size_t capacity) __asm__("__realpath_chk");
int mkstemp(char* path) __asm__("mkstemp");
int mkstemp64(char* path) __asm__("mkstemp64");
int mkostemp(char* path, int flags) __asm__("mkostemp");
int mkostemp64(char* path, int flags) __asm__("mkostemp64");
int mkstemps(char* path, int suffix) __asm__("mkstemps");
int mkstemps64(char* path, int suffix) __asm__("mkstemps64");
int mkostemps(char* path, int suffix, int flags) __asm__("mkostemps");
int mkostemps64(char* path, int suffix, int flags) __asm__("mkostemps64");
char* mkdtemp(char* path) __asm__("mkdtemp");
} // namespace interposed

int interposed::rename(const char* from, const char* to) {
    static const auto next = NextDefinition<int(const char*, const char*)>("rename");
    return eitherIsRedirected(from, to) ? callWithTwoPaths("rename", from, to, next) : next(from, to);
}

int interposed::renameat(int fromFolder, const char* from, int toFolder, const char* to) {
    static const auto next = NextDefinition<int(int, const char*, int, const char*)>("renameat");
    const auto make = [&](const char* f, const char* t) { return next(fromFolder, f, toFolder, t); };
    return eitherIsRedirected(from, to) ? callWithTwoPaths("renameat", from, to, make) : make(from, to);
}

int interposed::renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    static const auto next = NextDefinition<int(int, const char*, int, const char*, unsigned)>("renameat2");
    const auto make = [&](const char* f, const char* t) { return next(fromFolder, f, toFolder, t, flags); };
    return eitherIsRedirected(from, to) ? callWithTwoPaths("renameat2", from, to, make) : make(from, to);
}

int interposed::link(const char* from, const char* to) {
    static const auto next = NextDefinition<int(const char*, const char*)>("link");
    return eitherIsRedirected(from, to) ? callWithTwoPaths("link", from, to, next) : next(from, to);
}

int interposed::linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) {
    static const auto next = NextDefinition<int(int, const char*, int, const char*, int)>("linkat");
    const auto make = [&](const char* f, const char* t) { return next(fromFolder, f, toFolder, t, flags); };
    const LastLink link = flags & AT_SYMLINK_FOLLOW ? kFollow : kNoFollow;
    return eitherIsRedirected(from, to) ? callWithTwoPaths("linkat", from, to, make, link) : make(from, to);
}

/// Creates a symbolic link and does not convert its target. The target is redirected when a call follows the
/// link.
int interposed::symlink(const char* target, const char* path) {
    static const auto next = NextDefinition<int(const char*, const char*)>("symlink");
    if (!IsRedirected(path)) return next(target, path);
    const auto make = [&](const char* hostPath) { return next(target, hostPath); };
    return CallOnVolume<int>("symlink", -1, kNoFollow, path, make, target, path);
}

int interposed::symlinkat(const char* target, int folder, const char* path) {
    static const auto next = NextDefinition<int(const char*, int, const char*)>("symlinkat");
    if (!IsRedirected(path)) return next(target, folder, path);
    const auto make = [&](const char* hostPath) { return next(target, folder, hostPath); };
    return CallOnVolume<int>("symlinkat", -1, kNoFollow, path, make, target, path);
}

namespace {

/// Calls realpath and converts its result to a path of the Mac. With a path of this machine, the bundle would
/// leave the startup volume.
template <typename Make>
char* resolvedOnVolume(const char* path, Make make) {
    const auto resolve = [&](const char* hostPath) -> char* {
        char* const resolvedPath = make(hostPath);
        if (!resolvedPath || !LiesInStartupVolume(resolvedPath)) return resolvedPath;
        const std::string onMac = MacPath(resolvedPath); // shorter than `resolvedPath`
        std::memcpy(resolvedPath, onMac.c_str(), onMac.size() + 1);
        return resolvedPath;
    };
    return CallOnVolume<char*>("realpath", nullptr, kFollow, path, resolve, path);
}

} // namespace

char* interposed::realpath(const char* path, char* resolved) {
    static const auto next = NextDefinition<char*(const char*, char*)>("realpath");
    const auto make = [&](const char* hostPath) { return next(hostPath, resolved); };
    return IsRedirected(path) ? resolvedOnVolume(path, make) : make(path);
}

char* interposed::__realpath_chk(const char* path, char* resolved, std::size_t capacity) {
    static const auto next = NextDefinition<char*(const char*, char*, std::size_t)>("__realpath_chk");
    const auto make = [&](const char* hostPath) { return next(hostPath, resolved, capacity); };
    return IsRedirected(path) ? resolvedOnVolume(path, make) : make(path);
}

namespace {

/// Calls a function that generates the name of a temporary file. `path` is a template: it ends with six
/// placeholder characters and `suffix` further bytes. `make` replaces the placeholders in a copy of the path.
/// After a success, copies the generated characters to `path`.
template <typename Result, typename Make>
Result callWithTemplate(const char* name, Result failure, char* path, Make make, int suffix = 0) {
    return CallOnVolume<Result>(
        name, failure, kNoFollow, path,
        [&](const char* hostPath) {
            std::string filled = hostPath;
            const Result result = make(filled.data());
            const std::size_t length = std::strlen(path);
            const std::size_t made = std::min(length, std::size_t{6} + static_cast<unsigned>(suffix));
            if (result != failure)
                std::memcpy(path + length - made, filled.data() + filled.size() - made, made);
            return result;
        },
        path);
}

/// Calls the function `symbol` of the C library: mkstemps, mkstemps64, mkostemps or mkostemps64.
template <typename... Flags>
int callWithSuffix(const char* symbol, char* path, int suffix, Flags... flags) {
    const auto next = NextDefinition<int(char*, int, Flags...)>(symbol);
    const auto make = [&](char* filled) { return next(filled, suffix, flags...); };
    const char* const name = sizeof...(Flags) > 0 ? "mkostemps" : "mkstemps";
    return IsRedirected(path) ? callWithTemplate(name, -1, path, make, suffix) : make(path);
}

} // namespace

int interposed::mkstemps(char* path, int suffix) { return callWithSuffix("mkstemps", path, suffix); }
int interposed::mkstemps64(char* path, int suffix) { return callWithSuffix("mkstemps64", path, suffix); }
int interposed::mkostemps(char* path, int suffix, int flags) {
    return callWithSuffix("mkostemps", path, suffix, flags);
}
int interposed::mkostemps64(char* path, int suffix, int flags) {
    return callWithSuffix("mkostemps64", path, suffix, flags);
}

int interposed::mkstemp(char* path) {
    static const auto next = NextDefinition<int(char*)>("mkstemp");
    return IsRedirected(path) ? callWithTemplate("mkstemp", -1, path, next) : next(path);
}

int interposed::mkstemp64(char* path) {
    static const auto next = NextDefinition<int(char*)>("mkstemp64");
    return IsRedirected(path) ? callWithTemplate("mkstemp", -1, path, next) : next(path);
}

int interposed::mkostemp(char* path, int flags) {
    static const auto next = NextDefinition<int(char*, int)>("mkostemp");
    const auto make = [&](char* filled) { return next(filled, flags); };
    return IsRedirected(path) ? callWithTemplate("mkostemp", -1, path, make) : make(path);
}

int interposed::mkostemp64(char* path, int flags) {
    static const auto next = NextDefinition<int(char*, int)>("mkostemp64");
    const auto make = [&](char* filled) { return next(filled, flags); };
    return IsRedirected(path) ? callWithTemplate("mkostemp", -1, path, make) : make(path);
}

char* interposed::mkdtemp(char* path) {
    static const auto next = NextDefinition<char*(char*)>("mkdtemp");
    if (!IsRedirected(path)) return next(path);
    return callWithTemplate<char*>("mkdtemp", nullptr, path,
                                   [&](char* filled) { return next(filled) ? path : nullptr; });
}

#pragma GCC visibility pop
