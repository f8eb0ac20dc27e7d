#pragma once

/// The command `xcodhost volume`.

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

/// Makes or completes a sample volume. Throws as `MakeSampleVolume` does.
ExitStatus VolumeCommand(const VolumeOptions& options);

} // namespace xcodhost
