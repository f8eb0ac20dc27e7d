#pragma once

#include "contract/PluginContract.h"

#include <string>

namespace xcodhost {

/// A file's bytes as a parameter block. Throws UsageError, naming the file, when it cannot be read, is
/// shorter than a block or longer than 1 MiB.
ParameterBlock ReadBlockFile(const std::string& path);

} // namespace xcodhost
