#pragma once

/// Arrays seen from the platform's other services.

#include <CoreFoundation/CFArray.h>

#include "CFObject.h"

#include <vector>

namespace macplatform {

/// A new array that keeps a reference to each item. Throws std::bad_alloc.
CFArrayRef NewArray(std::vector<CFTypeRef> items);

} // namespace macplatform
