#pragma once

#include <string>

namespace xcodhost {

/// Returns the directory of a volume as an absolute path without symbolic links. Throws UsageError if the
/// directory does not exist, is not a directory, cannot be read, or is the root directory of this machine.
std::string VolumeFolder(const std::string& named);

} // namespace xcodhost
