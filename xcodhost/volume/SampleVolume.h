#pragma once

/// Declares functions that create and recognise a sample volume: a small startup volume with the items that
/// the installer of a product expects.

#include <optional>
#include <string>

namespace xcodhost {

/// The optional items of a sample volume.
struct SampleVolume {
    std::optional<std::string> status = "UpdatesEnabled"; ///< Contents of the status file. Absent: no file.
    bool hasFolder = true;                                ///< The vendor's folder, `/Applications/Korvane`.
    bool hasIcon = true;                                  ///< The custom-icon file in the vendor's folder.
};

/// Returns whether the directory contains all directories that every sample volume contains.
bool LooksLikeVolume(const std::string& folder);

/// Creates the volume and returns the number of new items. The directory must be missing, empty or a sample
/// volume. In a sample volume the function adds the missing items and does not change existing items. Throws
/// UsageError for any other directory. Throws ToolFault if an item cannot be created. The items that were
/// created before remain.
std::size_t MakeSampleVolume(const std::string& folder, const SampleVolume& sample);

} // namespace xcodhost
