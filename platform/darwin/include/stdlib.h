#pragma once

#include <stddef.h>
#include <sys/cdefs.h>

typedef struct {
    int quot, rem;
} div_t;
typedef struct {
    long quot, rem;
} ldiv_t;
typedef struct {
    long long quot, rem;
} lldiv_t;

__BEGIN_DECLS
void* malloc(size_t size);
void* calloc(size_t count, size_t size);
void* realloc(void* block, size_t size);
void free(void* block);
int posix_memalign(void** block, size_t alignment, size_t size);
void abort(void) __attribute__((noreturn));
void exit(int status) __attribute__((noreturn));
int atexit(void (*function)(void));
char* getenv(const char* name);
int abs(int value);
div_t div(int value, int divisor);
ldiv_t ldiv(long value, long divisor);
lldiv_t lldiv(long long value, long long divisor);
long labs(long value);
long long llabs(long long value);
long strtol(const char* text, char** end, int base);
unsigned long strtoul(const char* text, char** end, int base);
long long strtoll(const char* text, char** end, int base);
unsigned long long strtoull(const char* text, char** end, int base);
float strtof(const char* text, char** end) __asm("_strtof$UNIX2003");
double strtod(const char* text, char** end) __asm("_strtod$UNIX2003");
long double strtold(const char* text, char** end);
__END_DECLS
