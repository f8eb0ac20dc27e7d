#pragma once

#include <MacTypes.h>

#include <cstddef>
#include <sys/types.h>

MACPLATFORM_C_BEGIN

/// `count` is the room in `mib` and then the entries used; -1 with errno ENOENT for an unknown name.
int sysctlnametomib(const char* name, int* mib, std::size_t* count);
/// `*oldSize` is the room and then the bytes of the value; -1 with errno ENOMEM when the room is too small.
int sysctl(int* mib, unsigned int mibCount, void* oldValue, std::size_t* oldSize, void* newValue,
           std::size_t newSize);

MACPLATFORM_C_END
