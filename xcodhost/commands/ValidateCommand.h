#pragma once

/// The command `xcodhost validate`.

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

/// Checks the bundles, prints the result and writes the files. Throws UsageError, ToolFault and Interrupted.
ExitStatus ValidateCommand(const ValidateOptions& options);

} // namespace xcodhost
