#pragma once

#include <CoreFoundation/CFBase.h>

using CFArrayRef = const struct __CFArray*;

MACPLATFORM_C_BEGIN

CFIndex CFArrayGetCount(CFArrayRef);
const void* CFArrayGetValueAtIndex(CFArrayRef, CFIndex index);

MACPLATFORM_C_END
