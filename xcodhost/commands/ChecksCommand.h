#pragma once

/// `xcodhost list checks` and `xcodhost explain`

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

ExitStatus ListChecksCommand(const ListChecksOptions& options);

/// Throws UsageError when there is no such check, naming those of a similar id.
ExitStatus ExplainCommand(const ExplainOptions& options);

} // namespace xcodhost
