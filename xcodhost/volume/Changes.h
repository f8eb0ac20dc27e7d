#pragma once

/// Declares the differences between two states of a startup volume.

#include "FinderFlagNames.h"
#include "VolumeState.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace xcodhost {

/// A change of a top-level key in a preferences domain. An absent value means that the key does not exist.
struct PreferenceChange {
    std::string domain;
    std::string key;
    std::optional<macplatform::PropertyValue> before;
    std::optional<macplatform::PropertyValue> after;
};

/// A change of a Finder flag of an item. A setting is 0 or 1 for a flag, and a number for a field.
struct FinderFlagChange {
    std::string path; ///< On the Mac.
    FinderFlagName flag;
    int before = 0;
    int after = 0;
};

/// A change of another item of the volume.
struct FileChange {
    std::string path; ///< On the Mac.
    std::string what; ///< "created", "removed", "contents changed", "mode 0644 -> 0600", ...
};

/// All differences. Each list is sorted by domain or path.
struct Changes {
    std::vector<PreferenceChange> preferences;
    std::vector<FinderFlagChange> finderFlags;
    /// Other files, directories and links. A directory is not reported just because its entries changed.
    /// AppleDouble sidecars are not reported: on a file system without extended attributes they contain the
    /// Finder information.
    std::vector<FileChange> files;

    std::size_t Count() const { return preferences.size() + finderFlags.size() + files.size(); }
};

/// Returns the differences. Moves values out of both states to avoid copies of large property lists. Ignores
/// the keys of a preferences file that could not be read in one of the two states.
Changes Compare(VolumeState&& before, VolumeState&& after);

/// Returns whether both states contain the item and its contents did not change. Compares the inode, the size
/// and the modification time instead of the bytes.
bool IsUntouched(const VolumeState& before, const VolumeState& after, const std::string& path);

/// Returns the type and the value on one line: `(integer) 2`. Returns `(none)` if there is no value. Shortens
/// a value of more than 400 bytes and adds its size.
std::string Describe(const std::optional<macplatform::PropertyValue>& value);

/// Returns the letter, the name and the mask of a flag: `C custom icon (0x0400)`.
std::string Describe(const FinderFlagName& flag);

/// Returns `off` or `on` for a flag, and the number for a field.
std::string DescribeSetting(const FinderFlagName& flag, int setting);

} // namespace xcodhost
