#pragma once

/// Kernel variables by name. This layer has only the variable "hw.cpufrequency".

#include <MacTypes.h>

#include <cstddef>
#include <sys/types.h>

MACPLATFORM_C_BEGIN

/// Writes the numbers of a variable to `mib`. `*count` is the capacity of `mib` before the call and the
/// number of entries used after the call. Returns 0, or -1 with errno: ENOENT for an unknown name, ENOMEM if
/// the capacity is too small.
int sysctlnametomib(const char* name, int* mib, std::size_t* count);
/// Copies the value of a variable to `oldValue`. `*oldSize` is the size of the buffer in bytes before the
/// call and the size of the value after the call. Returns 0, or -1 with errno: ENOMEM if the buffer is too
/// small, ENOENT for an unknown variable, EPERM if `newValue` is not null.
int sysctl(int* mib, unsigned int mibCount, void* oldValue, std::size_t* oldSize, void* newValue,
           std::size_t newSize);

MACPLATFORM_C_END
