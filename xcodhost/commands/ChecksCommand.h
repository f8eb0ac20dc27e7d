#pragma once

/// The commands `xcodhost list checks` and `xcodhost explain`.

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

/// Prints all checks.
ExitStatus ListChecksCommand(const ListChecksOptions& options);

/// Prints one check. Throws UsageError if the id is unknown; the message lists the ids that contain it.
ExitStatus ExplainCommand(const ExplainOptions& options);

} // namespace xcodhost
