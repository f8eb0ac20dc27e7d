#pragma once

#include <string>

namespace macplatform {

/// Moves an item of the host to the Trash of the desktop (freedesktop.org Trash 1.0), and writes the record
/// from which the desktop restores the item. An AppleDouble sidecar moves with its item.
/// A symbolic link is moved itself.
///
/// An item of the startup volume goes to the Trash directory at the top of the volume. Any other item goes to
/// the home Trash if it is on the same file system, and otherwise to the Trash of its own file system.
///
/// Returns 0 or an errno. After an error, the item is at its old place. EBUSY: the item must not be moved to
/// the Trash. It is a mount point, the home directory, the startup volume, a directory that contains the
/// Trash, or an item of the Trash.
int MoveToTrash(const std::string& path);

} // namespace macplatform
