#pragma once

/// The command `xcodhost show`.

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

/// Prints all preferences and Finder flags of a volume, and one line for each item that cannot be read. An
/// item that cannot be read is not a failure. Throws UsageError and ToolFault.
ExitStatus ShowCommand(const ShowOptions& options);

} // namespace xcodhost
