#pragma once

namespace Util {

/// Returns whether a modal box may be shown. The library's definition returns true.
///
/// A program without a user links its own definition, which replaces the library's. The source of the
/// library's definition contains nothing else for this reason.
bool IsModalDialogAllowed();

} // namespace Util
