#pragma once

/// The command `xcodhost info`.

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

/// Prints the property list, factories, types and executables of a bundle. Throws as `ReadBundle` does.
ExitStatus InfoCommand(const InfoOptions& options);

} // namespace xcodhost
