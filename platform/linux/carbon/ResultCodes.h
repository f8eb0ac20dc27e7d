#pragma once

#include <MacTypes.h>

namespace macplatform {

/// The Mac's result code (Carbon/MacErrors.h) for an errno; ioErr where there is no nearer one, noErr for 0.
/// A refusal for want of rights is permErr, whichever right was wanting.
OSErr ResultCode(int error);

} // namespace macplatform
