#pragma once

/// Mac executables, recognised by their first bytes.

#include <string>
#include <string_view>
#include <vector>

namespace xcodhost {

struct MachOFile {
    std::vector<std::string> architectures; ///< "i386", "x86_64", "ppc", ... in the order of the file.
    std::string problem;
};

bool IsMachO(std::string_view bytes);

/// One architecture, or those of a universal file.
MachOFile ReadMachO(std::string_view bytes);

} // namespace xcodhost
