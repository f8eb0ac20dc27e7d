#pragma once

#include <sys/cdefs.h>

/// Only the first members of the system's structure are declared. The program reads only `decimal_point`.
struct lconv {
    char* decimal_point;
    char* thousands_sep;
    char* grouping;
};
#define LC_ALL 0
#define LC_NUMERIC 4

__BEGIN_DECLS
struct lconv* localeconv(void);
char* setlocale(int category, const char* name);
__END_DECLS
