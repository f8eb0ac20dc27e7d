#pragma once

#include <CoreFoundation/CFBase.h>

using CFTimeInterval = double;
using CFAbsoluteTime = CFTimeInterval;

MACPLATFORM_C_BEGIN

/// Seconds since 2001-01-01 00:00:00 GMT by the wall clock.
CFAbsoluteTime CFAbsoluteTimeGetCurrent(void);

MACPLATFORM_C_END
