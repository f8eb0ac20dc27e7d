#pragma once

#include <sys/cdefs.h>
#include <sys/types.h>

/// The version with 64-bit inode numbers: 2168 bytes.
struct statfs {
    uint32_t f_bsize;
    int32_t f_iosize;
    uint64_t f_blocks, f_bfree, f_bavail, f_files, f_ffree;
    int32_t f_fsid[2];
    uid_t f_owner;
    uint32_t f_type, f_flags, f_fssubtype;
    char f_fstypename[16];
    char f_mntonname[1024];
    char f_mntfromname[1024];
    uint32_t f_reserved[8];
};

__BEGIN_DECLS
int statfs(const char* path, struct statfs* status) __asm("_statfs$INODE64");
__END_DECLS
