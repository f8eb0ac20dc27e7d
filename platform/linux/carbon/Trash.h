#pragma once

#include <string>

namespace macplatform {

/// Moves an item of this machine to the Trash of the desktop (freedesktop.org Trash 1.0), and writes the
/// record from which the desktop restores the item. The path must be absolute. The function moves a symbolic
/// link and not its target. It also moves an AppleDouble sidecar of the item. A sidecar that cannot be moved
/// remains, which is not an error.
///
/// An item of the startup volume goes to the Trash directory at the top of the volume. Any other item goes to
/// the home Trash if it is on the same file system, and otherwise to the Trash of its own file system.
///
/// Returns 0 or an errno. After an error, the item is still at `path`. The errno is EBUSY if the item is a
/// mount point, the home directory, the startup volume, a directory that contains the Trash, or an item in
/// the Trash.
int MoveToTrash(const std::string& path);

} // namespace macplatform
