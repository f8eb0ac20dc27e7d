#pragma once

#include <string>

namespace xcodhost {

/// The folder as an absolute path without links. Throws UsageError when it is missing, is no folder, cannot
/// be read, or is this machine's own root, which is no Mac's.
std::string VolumeFolder(const std::string& named);

} // namespace xcodhost
