#pragma once

#include <objc/objc.h>

MACPLATFORM_C_BEGIN

/// Null when no such class is loaded; `NSAlert` is the one that this layer has.
id objc_getClass(const char* name);
/// The same name gives the same selector.
SEL sel_registerName(const char* name);

MACPLATFORM_C_END
