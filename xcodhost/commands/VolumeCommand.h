#pragma once

/// `xcodhost volume`

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

ExitStatus VolumeCommand(const VolumeOptions& options);

} // namespace xcodhost
