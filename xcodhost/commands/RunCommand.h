#pragma once

/// Declares the command `xcodhost run`.

#include "Options.h"
#include "run/RunResult.h"

namespace xcodhost {

/// Delivers the events in a child process. Returns the calls and the changes on the volume. Throws UsageError
/// before it starts the child process. Throws ToolFault and Interrupted.
RunResult RunBundle(const RunOptions& options);

/// Runs the bundle, prints the result and returns the exit status. Throws as `RunBundle` does.
ExitStatus RunCommand(const RunOptions& options);

} // namespace xcodhost
