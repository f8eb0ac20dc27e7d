#pragma once

/// A small startup volume as an installer of the maker's products finds it.

#include <optional>
#include <string>

namespace xcodhost {

struct SampleVolume {
    std::optional<std::string> status = "UpdatesEnabled"; ///< The updater's status file; nothing makes none.
    bool hasFolder = true;                                ///< `/Applications/Korvane`
    bool hasIcon = true;                                  ///< Its custom-icon file.
};

/// Whether the folder has the look of a startup volume: all folders that a sample has.
bool LooksLikeVolume(const std::string& folder);

/// Makes the volume in a folder that is not there, is empty, or is a volume already; there it adds what is
/// missing and leaves all else as it is. Answers how many items were made. Throws UsageError for any other
/// folder, and ToolFault.
std::size_t MakeSampleVolume(const std::string& folder, const SampleVolume& sample);

} // namespace xcodhost
