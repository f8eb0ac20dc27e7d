#pragma once

/// Creates arrays for the platform's other services.

#include <CoreFoundation/CFArray.h>

#include "CFObject.h"

#include <vector>

namespace macplatform {

/// Creates an array that retains each item. The caller owns the result. Throws std::bad_alloc.
CFArrayRef NewArray(std::vector<CFTypeRef> items);

} // namespace macplatform
