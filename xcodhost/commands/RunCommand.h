#pragma once

/// The command `xcodhost run`.

#include "Options.h"
#include "run/RunResult.h"

namespace xcodhost {

/// Delivers the events in a child process and returns the calls and the changes on the volume. Throws
/// UsageError before the child process starts. Throws ToolFault and Interrupted.
RunResult RunBundle(const RunOptions& options);

/// Runs the bundle and prints the result. Throws as `RunBundle` does.
ExitStatus RunCommand(const RunOptions& options);

} // namespace xcodhost
