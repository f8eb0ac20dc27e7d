#pragma once

#include <CoreFoundation/CFBase.h>

using CFBundleRef = const struct __CFBundle*;
