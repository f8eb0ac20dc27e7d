#pragma once

/// Calls of the C library whose records, error numbers or forms differ on the Mac.

#include "DarwinCalls.h"

#include <vector>

namespace macplatform {

const std::vector<DarwinCall>& DarwinFileCalls();

} // namespace macplatform
