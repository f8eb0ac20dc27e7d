#pragma once

/// Declares a function that creates arrays, for other sources of the platform.

#include <CoreFoundation/CFArray.h>

#include "CFObject.h"

#include <vector>

namespace macplatform {

/// Creates an array of the items and retains each item. The caller owns the result. Throws std::bad_alloc.
CFArrayRef NewArray(std::vector<CFTypeRef> items);

} // namespace macplatform
