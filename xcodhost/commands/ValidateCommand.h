#pragma once

/// `xcodhost validate`

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

/// Checks the bundles, prints the result and writes the files that were asked for. Throws UsageError,
/// ToolFault and Interrupted.
ExitStatus ValidateCommand(const ValidateOptions& options);

} // namespace xcodhost
