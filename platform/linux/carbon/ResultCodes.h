#pragma once

#include <MacTypes.h>

namespace macplatform {

/// Returns the Mac's result code (Carbon/MacErrors.h) for an errno. Returns `noErr` for 0, `permErr` for
/// every missing permission, and `ioErr` for an errno without a corresponding result code.
OSErr ResultCode(int error);

} // namespace macplatform
