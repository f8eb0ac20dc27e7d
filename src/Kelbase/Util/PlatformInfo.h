#pragma once

#include <Kelbase/common/common_path.h>
#include <Kelbase/common/common_string.h>

#include <map>

namespace Util {

unsigned int GetNumLogicalProcessors();          ///< At least 1.
unsigned long long GetTotalHeapAllocatedBytes(); ///< Always 0: this platform does not tell.

/// The running process's name, for a plug-in that of the program which loaded it; empty when unknown.
String GetCurrentProcessName();

/// A function of a linker's map file.
///
/// This platform captures no stack and reads no map: the types and calls for that are here so that one caller
/// serves every platform.
struct MapFileFunctionInfo {
    String name;           ///< As the linker has it.
    unsigned int size = 0; ///< In bytes.
};

/// The function that a return address lies in.
struct ReturnAddressInfo {
    String function;         ///< Its name.
    unsigned int offset = 0; ///< From the function's beginning, in bytes.
};

/// Ends the list at once: stores 0 in the first slot of `frames`.
void GetCallStack(unsigned int, unsigned int* frames);
/// False; `table`, functions by address, stays as it is.
bool ParseMapFile(std::map<unsigned int, MapFileFunctionInfo>& table, const FilePath& file, unsigned int);
/// False; `info` stays as it is.
bool MapFileLookupReturnAddress(ReturnAddressInfo& info, unsigned int address,
                                const std::map<unsigned int, MapFileFunctionInfo>& table);

} // namespace Util
