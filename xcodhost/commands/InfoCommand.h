#pragma once

/// `xcodhost info`

#include "ExitStatus.h"
#include "Options.h"

namespace xcodhost {

ExitStatus InfoCommand(const InfoOptions& options);

} // namespace xcodhost
