#pragma once

/// Functions of the Objective-C runtime: classes and selectors by name.

#include <objc/objc.h>

MACPLATFORM_C_BEGIN

/// Returns the class, and null if the class is unknown. This layer has only the class `NSAlert`.
id objc_getClass(const char* name);
/// Returns the selector with this name. Equal names give the same selector.
SEL sel_registerName(const char* name);

MACPLATFORM_C_END
