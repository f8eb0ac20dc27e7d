#pragma once

/// The names that one image of a Mac executable exports.

#include "MachOBytes.h"

#include <string>
#include <vector>

namespace xcodhost {

/// `image` begins with its header. Sorted, each once. Throws BrokenMachO.
std::vector<std::string> MachOExports(const MachOBytes& image, bool is64Bit);

} // namespace xcodhost
