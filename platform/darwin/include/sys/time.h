#pragma once

#include <sys/cdefs.h>
#include <sys/types.h>

struct timeval {
    time_t tv_sec;
    int32_t tv_usec;
};

__BEGIN_DECLS
int gettimeofday(struct timeval* now, void* zone);
int utimes(const char* path, const struct timeval* times);
__END_DECLS
