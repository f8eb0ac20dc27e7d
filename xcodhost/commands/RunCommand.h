#pragma once

/// Declares the command `xcodhost run`.

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

/// Runs the bundle, prints the result and returns the exit status. Throws UsageError if a parameter block is
/// wrong, and as `RunBundle` does.
ExitStatus RunCommand(const RunOptions& options);

} // namespace xcodhost
