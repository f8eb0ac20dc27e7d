#pragma once

/// Nonrelocatable memory blocks. Do not pass the blocks to free or realloc.

#include <MacTypes.h>

MACPLATFORM_C_BEGIN

/// Allocates an uninitialised block of `size` bytes with an alignment of 16 bytes. Returns null and sets the
/// result of MemError to memFullErr for lack of memory and for a negative size.
Ptr NewPtr(Size size);
/// Frees a block of `NewPtr`. Does nothing for null. Any other pointer ends the process.
void DisposePtr(Ptr block);
/// Returns the result of the last call of NewPtr or DisposePtr on this thread.
OSErr MemError(void);

MACPLATFORM_C_END
