#pragma once

#include <stdarg.h>
#include <sys/cdefs.h>
#include <sys/types.h>

typedef struct __sFILE FILE;
typedef int64_t fpos_t;

#define EOF (-1)
#define BUFSIZ 1024
#define SEEK_SET 0
#define SEEK_CUR 1
#define SEEK_END 2

__BEGIN_DECLS
extern FILE* __stderrp;

FILE* fopen(const char* path, const char* mode) __asm("_fopen$UNIX2003");
int fclose(FILE* file);
int fflush(FILE* file);
int feof(FILE* file);
int ferror(FILE* file);
int fileno(FILE* file);
size_t fread(void* bytes, size_t size, size_t count, FILE* file);
size_t fwrite(const void* bytes, size_t size, size_t count, FILE* file) __asm("_fwrite$UNIX2003");
int fseeko(FILE* file, off_t offset, int whence);
off_t ftello(FILE* file);
int remove(const char* path);
int rename(const char* from, const char* to);
int snprintf(char* text, size_t size, const char* format, ...);
int vsnprintf(char* text, size_t size, const char* format, va_list arguments);
int fprintf(FILE* file, const char* format, ...);
int vfprintf(FILE* file, const char* format, va_list arguments);
__END_DECLS
#define stderr __stderrp
