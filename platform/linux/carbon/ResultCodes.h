#pragma once

#include <MacTypes.h>

namespace macplatform {

/// Returns the Mac's result code (Carbon/MacErrors.h) for an errno: `noErr` for 0, and `ioErr` for an errno
/// without a result code of its own. Every missing permission is `permErr`.
OSErr ResultCode(int error);

} // namespace macplatform
