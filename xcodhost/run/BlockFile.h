#pragma once

#include "contract/PluginContract.h"

#include <string>

namespace xcodhost {

/// Returns a parameter block with the bytes of a file. Throws UsageError with the path if the file cannot be
/// read, is shorter than a parameter block, or is longer than 1 MiB.
ParameterBlock ReadBlockFile(const std::string& path);

} // namespace xcodhost
