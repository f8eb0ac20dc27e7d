#pragma once

#include <MacTypes.h>

MACPLATFORM_C_BEGIN

/// Returns the number of processors of the machine, at least 1.
ItemCount MPProcessors(void);

MACPLATFORM_C_END
