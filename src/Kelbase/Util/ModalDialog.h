#pragma once

namespace Util {

/// Whether a box that waits for the user may be shown at all; true as the library stands.
///
/// A program without a user links a definition of its own, which then takes the place of the library's: this
/// function is alone in its source for that.
bool IsModalDialogAllowed();

} // namespace Util
