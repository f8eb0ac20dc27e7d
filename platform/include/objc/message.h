#pragma once

#include <objc/objc.h>

MACPLATFORM_C_BEGIN

/// Sends a message to an object. Callers cast the function to the exact type of the method. The result for a
/// null receiver is 0.
void objc_msgSend(void);

MACPLATFORM_C_END
