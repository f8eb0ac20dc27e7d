#pragma once

#include "MachOBytes.h"

#include <string>
#include <vector>

namespace xcodhost {

/// Returns the exported names of one Mach-O image, sorted and without duplicates. `image` begins with the
/// Mach-O header. Throws BrokenMachO if the image is malformed.
std::vector<std::string> MachOExports(const MachOBytes& image, bool is64Bit);

} // namespace xcodhost
