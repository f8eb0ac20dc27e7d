#pragma once

/// Immutable arrays of objects.

#include <CoreFoundation/CFBase.h>

using CFArrayRef = const struct __CFArray*;

MACPLATFORM_C_BEGIN

CFIndex CFArrayGetCount(CFArrayRef);
/// Returns an item that the array owns. An index out of bounds ends the process.
const void* CFArrayGetValueAtIndex(CFArrayRef, CFIndex index);

MACPLATFORM_C_END
