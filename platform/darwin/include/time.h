#pragma once

#include <sys/cdefs.h>
#include <sys/types.h>

struct timespec {
    time_t tv_sec;
    long tv_nsec;
};
struct tm {
    int tm_sec, tm_min, tm_hour, tm_mday, tm_mon, tm_year, tm_wday, tm_yday, tm_isdst;
    long tm_gmtoff;
    char* tm_zone;
};
#define CLOCKS_PER_SEC 1000000

__BEGIN_DECLS
clock_t clock(void) __asm("_clock$UNIX2003");
double difftime(time_t later, time_t earlier);
time_t mktime(struct tm* parts) __asm("_mktime$UNIX2003");
time_t time(time_t* result);
char* asctime(const struct tm* parts);
char* ctime(const time_t* when);
struct tm* gmtime(const time_t* when);
struct tm* localtime(const time_t* when);
size_t strftime(char* text, size_t size, const char* format,
                const struct tm* parts) __asm("_strftime$UNIX2003");
__END_DECLS
