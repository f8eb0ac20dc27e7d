#pragma once

#include <sys/cdefs.h>
#include <sys/types.h>

typedef struct __dirstream DIR;
struct dirent {
    ino_t d_ino;
    uint64_t d_seekoff;
    uint16_t d_reclen;
    uint16_t d_namlen;
    uint8_t d_type;
    char d_name[1024];
};
#define DT_UNKNOWN 0
#define DT_FIFO 1
#define DT_CHR 2
#define DT_DIR 4
#define DT_BLK 6
#define DT_REG 8
#define DT_LNK 10
#define DT_SOCK 12

__BEGIN_DECLS
DIR* opendir(const char* path) __asm("_opendir$INODE64$UNIX2003");
struct dirent* readdir(DIR* folder) __asm("_readdir$INODE64");
int closedir(DIR* folder) __asm("_closedir$UNIX2003");
__END_DECLS
