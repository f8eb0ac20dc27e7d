#pragma once

/// Declares the commands `xcodhost list checks` and `xcodhost explain`.

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

/// Prints all checks.
ExitStatus ListChecksCommand(const ListChecksOptions& options);

/// Prints one check. Throws UsageError if the id is unknown. The message lists the ids that contain the
/// unknown id.
ExitStatus ExplainCommand(const ExplainOptions& options);

} // namespace xcodhost
