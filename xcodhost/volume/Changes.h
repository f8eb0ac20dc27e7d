#pragma once

/// The differences between two states of a startup volume.

#include "FinderFlagNames.h"
#include "VolumeState.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace xcodhost {

/// A top-level key of a preferences domain. A missing value means that the key does not exist.
struct PreferenceChange {
    std::string domain;
    std::string key;
    std::optional<macplatform::PropertyValue> before;
    std::optional<macplatform::PropertyValue> after;
};

/// A Finder flag of an item. The settings are 0 and 1, or the numbers of a field.
struct FinderFlagChange {
    std::string path; ///< On the Mac.
    FinderFlagName flag;
    int before = 0;
    int after = 0;
};

/// Another item of the volume.
struct FileChange {
    std::string path; ///< On the Mac.
    std::string what; ///< "created", "removed", "contents changed", "mode 0644 -> 0600", ...
};

/// All differences, each list in the order of the domains or paths.
struct Changes {
    std::vector<PreferenceChange> preferences;
    std::vector<FinderFlagChange> finderFlags;
    /// Other files, directories and links. A directory is not reported just because its entries changed.
    /// AppleDouble sidecars are not reported: on a file system without extended attributes they contain the
    /// Finder information.
    std::vector<FileChange> files;

    std::size_t Count() const { return preferences.size() + finderFlags.size() + files.size(); }
};

/// Returns the differences. Moves values out of both states, because property lists can be large. Ignores the
/// keys of a preferences file that could not be read in one of the states.
Changes Compare(VolumeState&& before, VolumeState&& after);

/// Returns whether both states have the item with the same contents. Compares inode, size and modification
/// time instead of the bytes.
bool IsUntouched(const VolumeState& before, const VolumeState& after, const std::string& path);

/// Returns the type and the value on one line: `(integer) 2`. Returns `(none)` if there is no value. Cuts a
/// value of more than 400 bytes and adds its size.
std::string Describe(const std::optional<macplatform::PropertyValue>& value);

/// Returns letter, name and mask: `C custom icon (0x0400)`.
std::string Describe(const FinderFlagName& flag);

/// Returns `off` or `on`, or the number of a field.
std::string DescribeSetting(const FinderFlagName& flag, int setting);

} // namespace xcodhost
