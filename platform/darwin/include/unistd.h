#pragma once

#include <sys/cdefs.h>
#include <sys/types.h>

#define F_OK 0
#define X_OK 1
#define W_OK 2
#define R_OK 4

__BEGIN_DECLS
int access(const char* path, int mode);
char* getcwd(char* path, size_t size);
int rmdir(const char* path);
int unlink(const char* path);
__END_DECLS
