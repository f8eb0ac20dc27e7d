#pragma once

#include <objc/objc.h>

MACPLATFORM_C_BEGIN

/// Sends a message. Callers cast it to the exact function type of the method. A null receiver answers 0.
void objc_msgSend(void);

MACPLATFORM_C_END
