#pragma once

/// `xcodhost run`

#include "Options.h"
#include "run/RunResult.h"

namespace xcodhost {

/// Delivers the events in a child process and tells what changed on the volume. Throws UsageError before
/// anything is started, ToolFault, and Interrupted.
RunResult RunBundle(const RunOptions& options);

/// Runs, and prints the result.
ExitStatus RunCommand(const RunOptions& options);

} // namespace xcodhost
