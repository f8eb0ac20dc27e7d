#pragma once

/// @file
/// Information about the processor, the process and its call stack.

#include <Kelbase/common/common_path.h>
#include <Kelbase/common/common_string.h>

#include <map>

namespace Util {

unsigned int GetNumLogicalProcessors();          ///< Returns at least 1.
unsigned long long GetTotalHeapAllocatedBytes(); ///< Always returns 0 on this platform.

/// Returns the name of the running process. In a plug-in this is the program that loaded it. Returns an empty
/// text if the name is unknown or not UTF-8.
String GetCurrentProcessName();

/// A function of a linker's map file.
///
/// This platform captures no call stack and reads no map file. The types and functions exist so that the same
/// code compiles on every platform.
struct MapFileFunctionInfo {
    String name;           ///< The name in the map file.
    unsigned int size = 0; ///< The size in bytes.
};

/// The function that contains a return address.
struct ReturnAddressInfo {
    String function;         ///< The name of the function.
    unsigned int offset = 0; ///< The offset from the start of the function, in bytes.
};

/// Stores 0 in the first slot of `frames`, which means an empty list. Null does nothing.
void GetCallStack(unsigned int, unsigned int* frames);
/// Returns false and leaves `table` (functions by address) unchanged.
bool ParseMapFile(std::map<unsigned int, MapFileFunctionInfo>& table, const FilePath& file, unsigned int);
/// Returns false and leaves `info` unchanged.
bool MapFileLookupReturnAddress(ReturnAddressInfo& info, unsigned int address,
                                const std::map<unsigned int, MapFileFunctionInfo>& table);

} // namespace Util
