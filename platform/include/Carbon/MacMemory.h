#pragma once

/// Nonrelocatable blocks. They are no business of malloc and free.

#include <MacTypes.h>

MACPLATFORM_C_BEGIN

/// An uninitialised block, 16-byte aligned; null and memFullErr when there is no memory or `size` is
/// negative.
Ptr NewPtr(Size size);
/// Null does nothing; a pointer that is no such block ends the process, as heap damage would.
void DisposePtr(Ptr block);
/// Result of this thread's last call of the Memory Manager.
OSErr MemError(void);

MACPLATFORM_C_END
