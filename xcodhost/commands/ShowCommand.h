#pragma once

/// `xcodhost show`

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

/// Prints all preferences and Finder flags of a volume. What cannot be read is named, and no failure.
ExitStatus ShowCommand(const ShowOptions& options);

} // namespace xcodhost
