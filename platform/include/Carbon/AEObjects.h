#pragma once

#include <Carbon/AppleEvents.h>

MACPLATFORM_C_BEGIN

/// Creates a descriptor that identifies an object by its class, its container, and a key of the given form.
/// Disposes of `container` and `keyData` if `disposeInputs` is true.
OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType keyForm, AEDesc* keyData,
                         Boolean disposeInputs, AEDesc* specifier);

MACPLATFORM_C_END
