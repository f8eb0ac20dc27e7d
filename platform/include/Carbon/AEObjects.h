#pragma once

#include <Carbon/AppleEvents.h>

MACPLATFORM_C_BEGIN

/// Names an object by its class, what holds it, and a key of the given form.
OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType keyForm, AEDesc* keyData,
                         Boolean disposeInputs, AEDesc* specifier);

MACPLATFORM_C_END
