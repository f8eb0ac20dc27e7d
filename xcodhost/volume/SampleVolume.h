#pragma once

/// Makes a small startup volume with the items that the installer of a product expects.

#include <optional>
#include <string>

namespace xcodhost {

/// The optional items of a sample volume.
struct SampleVolume {
    std::optional<std::string> status = "UpdatesEnabled"; ///< Contents of the updater's status file.
    bool hasFolder = true;                                ///< The vendor's folder, `/Applications/Korvane`.
    bool hasIcon = true;                                  ///< The custom-icon file in the vendor's folder.
};

/// Returns whether the directory has all folders that every sample volume has.
bool LooksLikeVolume(const std::string& folder);

/// Makes the volume and returns the number of new items. The directory must not exist, must be empty, or must
/// be a sample volume. In a sample volume the function adds the missing items and does not change existing
/// ones. Throws UsageError for any other directory. Throws ToolFault if an item cannot be made; the items
/// made before remain.
std::size_t MakeSampleVolume(const std::string& folder, const SampleVolume& sample);

} // namespace xcodhost
