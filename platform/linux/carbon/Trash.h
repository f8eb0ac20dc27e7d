#pragma once

#include <string>

namespace macplatform {

/// Moves an item of this machine to the Trash of the desktop (freedesktop.org Trash 1.0), with the record
/// that lets it be put back. An item of the startup volume goes to the Trash folder at the volume's top, any
/// other to the home Trash or, on another file system, to that one's. A link is moved itself; an AppleDouble
/// sidecar goes along.
///
/// The answer is 0 or an errno, and then the item is where it was: EBUSY for what must not go there (a mount
/// point, the home folder, the Trash itself).
int MoveToTrash(const std::string& path);

} // namespace macplatform
