#pragma once

#include <sys/cdefs.h>
#include <sys/types.h>
#include <time.h>

/// The version with 64-bit inode numbers: 108 bytes.
struct stat {
    dev_t st_dev;
    mode_t st_mode;
    nlink_t st_nlink;
    ino_t st_ino;
    uid_t st_uid;
    gid_t st_gid;
    dev_t st_rdev;
    struct timespec st_atimespec, st_mtimespec, st_ctimespec, st_birthtimespec;
    off_t st_size;
    blkcnt_t st_blocks;
    blksize_t st_blksize;
    uint32_t st_flags;
    uint32_t st_gen;
    int32_t st_lspare;
    int64_t st_qspare[2];
};
#define st_atime st_atimespec.tv_sec
#define st_mtime st_mtimespec.tv_sec

#define S_IFMT 0170000
#define S_IFDIR 0040000
#define S_IFREG 0100000
#define S_IRWXU 0000700
#define S_IRUSR 0000400
#define S_IWUSR 0000200
#define S_IXUSR 0000100
#define S_IRWXG 0000070
#define S_IRGRP 0000040
#define S_IWGRP 0000020
#define S_IXGRP 0000010
#define S_IRWXO 0000007
#define S_IROTH 0000004
#define S_IWOTH 0000002
#define S_IXOTH 0000001

inline bool S_ISDIR(mode_t mode) { return (mode & S_IFMT) == S_IFDIR; }
inline bool S_ISREG(mode_t mode) { return (mode & S_IFMT) == S_IFREG; }

__BEGIN_DECLS
int stat(const char* path, struct stat* status) __asm("_stat$INODE64");
int lstat(const char* path, struct stat* status) __asm("_lstat$INODE64");
int fstat(int descriptor, struct stat* status) __asm("_fstat$INODE64");
int chmod(const char* path, mode_t mode) __asm("_chmod$UNIX2003");
int mkdir(const char* path, mode_t mode);
__END_DECLS
