// Each interposed call of the C library fails with the injected fault and is recorded under its name.

#include "support/CallRecorder.h"
#include "support/VolumeTest.h"

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/time.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utime.h>

extern "C" {
int __open_2(const char* path, int flags);
int __open64_2(const char* path, int flags);
int __openat_2(int folder, const char* path, int flags);
int __openat64_2(int folder, const char* path, int flags);
// Declared by the headers of older C libraries. The first parameter is the version of the structure.
int __xstat(int version, const char* path, struct stat* status);
int __xstat64(int version, const char* path, struct stat64* status);
int __lxstat(int version, const char* path, struct stat* status);
int __lxstat64(int version, const char* path, struct stat64* status);
int __fxstatat(int version, int folder, const char* path, struct stat* status, int flags);
int __fxstatat64(int version, int folder, const char* path, struct stat64* status, int flags);
int __xmknod(int version, const char* path, mode_t mode, dev_t* device);
}

namespace {

using PathCallFaults = VolumeTest;

constexpr int kHere = AT_FDCWD;
char gBuffer[4096]; ///< For results. A call with an injected fault writes none.

/// Returns the buffer as an object that the call fills.
template <typename T>
T* result() {
    return reinterpret_cast<T*>(gBuffer);
}

/// A call with this path. Returns -1 if the call fails, also for a call that returns a pointer.
struct Row {
    const char* recordedName;
    long (*call)(const char* path);
};

long failed(const void* pointer) { return pointer ? 0 : -1; }
char* filled(const char* path) { return std::strcpy(gBuffer, path); }
int visit(const char*, const struct stat*, int) { return 0; }
int visit64(const char*, const struct stat64*, int) { return 0; }
int visitNode(const char*, const struct stat*, int, FTW*) { return 0; }
int visitNode64(const char*, const struct stat64*, int, FTW*) { return 0; }

/// A macro, because the rows would be twice as long with the head of the lambda.
#define CALL(EXPRESSION) [](const char* path) -> long { return EXPRESSION; }

// clang-format off
const Row kOpeningCalls[] = {
    {"open", CALL(open(path, O_RDONLY))},
    {"open", CALL(open64(path, O_RDONLY))},
    {"open", CALL(__open_2(path, O_RDONLY))},
    {"open", CALL(__open64_2(path, O_RDONLY))},
    {"openat", CALL(openat(kHere, path, O_RDONLY))},
    {"openat", CALL(openat64(kHere, path, O_RDONLY))},
    {"openat", CALL(__openat_2(kHere, path, O_RDONLY))},
    {"openat", CALL(__openat64_2(kHere, path, O_RDONLY))},
    {"creat", CALL(creat(path, 0600))},
    {"creat", CALL(creat64(path, 0600))},
    {"fopen", CALL(failed(fopen(path, "r")))},
    {"fopen", CALL(failed(fopen64(path, "r")))},
    {"freopen", CALL(failed(freopen(path, "r", stdin)))},
    {"freopen", CALL(failed(freopen64(path, "r", stdin)))},
    {"opendir", CALL(failed(opendir(path)))},
    {"scandir", CALL(scandir(path, result<dirent**>(), nullptr, nullptr))},
    {"scandir", CALL(scandir64(path, result<dirent64**>(), nullptr, nullptr))},
    {"ftw", CALL(ftw(path, &visit, 4))},
    {"ftw", CALL(ftw64(path, &visit64, 4))},
    {"nftw", CALL(nftw(path, &visitNode, 4, 0))},
    {"nftw", CALL(nftw64(path, &visitNode64, 4, 0))},
};
const Row kQueries[] = {
    {"stat", CALL(stat(path, result<struct stat>()))},
    {"stat", CALL(stat64(path, result<struct stat64>()))},
    {"lstat", CALL(lstat(path, result<struct stat>()))},
    {"lstat", CALL(lstat64(path, result<struct stat64>()))},
    {"stat", CALL(__xstat(1, path, result<struct stat>()))},
    {"stat", CALL(__xstat64(1, path, result<struct stat64>()))},
    {"lstat", CALL(__lxstat(1, path, result<struct stat>()))},
    {"lstat", CALL(__lxstat64(1, path, result<struct stat64>()))},
    {"fstatat", CALL(__fxstatat(1, kHere, path, result<struct stat>(), 0))},
    {"fstatat", CALL(__fxstatat64(1, kHere, path, result<struct stat64>(), 0))},
    {"fstatat", CALL(fstatat(kHere, path, result<struct stat>(), 0))},
    {"fstatat", CALL(fstatat64(kHere, path, result<struct stat64>(), 0))},
    {"statx", CALL(statx(kHere, path, 0, 0, result<struct statx>()))},
    {"statfs", CALL(statfs(path, result<struct statfs>()))},
    {"statfs", CALL(statfs64(path, result<struct statfs64>()))},
    {"statvfs", CALL(statvfs(path, result<struct statvfs>()))},
    {"statvfs", CALL(statvfs64(path, result<struct statvfs64>()))},
    {"access", CALL(access(path, F_OK))},
    {"euidaccess", CALL(euidaccess(path, F_OK))},
    {"eaccess", CALL(eaccess(path, F_OK))},
    {"faccessat", CALL(faccessat(kHere, path, F_OK, 0))},
    {"readlink", CALL(readlink(path, gBuffer, sizeof gBuffer))},
    {"readlinkat", CALL(readlinkat(kHere, path, gBuffer, sizeof gBuffer))},
    {"realpath", CALL(failed(realpath(path, nullptr)))},
    {"getxattr", CALL(getxattr(path, "user.a", gBuffer, 1))},
    {"lgetxattr", CALL(lgetxattr(path, "user.a", gBuffer, 1))},
    {"listxattr", CALL(listxattr(path, gBuffer, 1))},
    {"llistxattr", CALL(llistxattr(path, gBuffer, 1))},
};
const Row kChanges[] = {
    {"mkdir", CALL(mkdir(path, 0700))},
    {"mkdirat", CALL(mkdirat(kHere, path, 0700))},
    {"mkfifo", CALL(mkfifo(path, 0600))},
    {"mkfifoat", CALL(mkfifoat(kHere, path, 0600))},
    {"mknod", CALL(mknod(path, S_IFREG, 0))},
    {"mknod", CALL(__xmknod(0, path, S_IFREG, result<dev_t>()))},
    {"mknodat", CALL(mknodat(kHere, path, S_IFREG, 0))},
    {"mkdtemp", CALL(failed(mkdtemp(filled(path))))},
    {"rmdir", CALL(rmdir(path))},
    {"unlink", CALL(unlink(path))},
    {"unlinkat", CALL(unlinkat(kHere, path, 0))},
    {"remove", CALL(remove(path))},
    {"chdir", CALL(chdir(path))},
    {"chmod", CALL(chmod(path, 0600))},
    {"fchmodat", CALL(fchmodat(kHere, path, 0600, 0))},
    {"chown", CALL(chown(path, 0, 0))},
    {"lchown", CALL(lchown(path, 0, 0))},
    {"fchownat", CALL(fchownat(kHere, path, 0, 0, 0))},
    {"utime", CALL(utime(path, nullptr))},
    {"utimes", CALL(utimes(path, nullptr))},
    {"lutimes", CALL(lutimes(path, nullptr))},
    {"utimensat", CALL(utimensat(kHere, path, nullptr, 0))},
    {"truncate", CALL(truncate(path, 0))},
    {"truncate", CALL(truncate64(path, 0))},
    {"setxattr", CALL(setxattr(path, "user.a", gBuffer, 1, 0))},
    {"lsetxattr", CALL(lsetxattr(path, "user.a", gBuffer, 1, 0))},
    {"removexattr", CALL(removexattr(path, "user.a"))},
    {"lremovexattr", CALL(lremovexattr(path, "user.a"))},
    {"rename", CALL(rename(path, "/Library/b"))},
    {"renameat", CALL(renameat(kHere, path, kHere, "/Library/b"))},
    {"renameat2", CALL(renameat2(kHere, path, kHere, "/Library/b", 0))},
    {"link", CALL(link(path, "/Library/b"))},
    {"linkat", CALL(linkat(kHere, path, kHere, "/Library/b", 0))},
    {"symlink", CALL(symlink(path, "/Library/b"))},
    {"symlinkat", CALL(symlinkat(path, kHere, "/Library/b"))},
};
// clang-format on

void expectFails(const Row& row) {
    macplatform::InjectFault({row.recordedName, EACCES, 0});
    const CallRecorder calls;
    errno = 0;
    EXPECT_EQ(row.call("/Library/aXXXXXX"), -1) << row.recordedName;
    EXPECT_EQ(errno, EACCES) << row.recordedName;
    EXPECT_EQ(macplatform::CancelInjectedFaults(), 0U) << row.recordedName;
    ASSERT_EQ(calls.lines.size(), 1U) << row.recordedName;
    EXPECT_EQ(calls.lines[0].rfind(std::string(row.recordedName) + "(\"/Library/aXXXXXX\"", 0), 0U);
    EXPECT_NE(calls.lines[0].find(": Permission denied"), std::string::npos) << calls.lines[0];
}

} // namespace

TEST_F(PathCallFaults, FailEachCall) {
    volume.Write("Library/aXXXXXX");
    for (const Row& row : kOpeningCalls) expectFails(row);
    for (const Row& row : kQueries) expectFails(row);
    for (const Row& row : kChanges) expectFails(row);
}
