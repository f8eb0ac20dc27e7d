#pragma once

/// The wall clock.

#include <CoreFoundation/CFBase.h>

using CFTimeInterval = double;
using CFAbsoluteTime = CFTimeInterval;

MACPLATFORM_C_BEGIN

/// Returns the seconds since 2001-01-01 00:00:00 GMT on the wall clock.
CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);

MACPLATFORM_C_END
