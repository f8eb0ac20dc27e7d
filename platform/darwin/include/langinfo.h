#pragma once

#include <sys/cdefs.h>

typedef int nl_item;
#define RADIXCHAR 44

__BEGIN_DECLS
char* nl_langinfo(nl_item item);
__END_DECLS
