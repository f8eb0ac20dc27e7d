#pragma once

/// What differs between two moments of a startup volume.

#include "FinderFlagNames.h"
#include "VolumeState.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace xcodhost {

struct PreferenceChange {
    std::string domain;
    std::string key;
    std::optional<macplatform::PropertyValue> before; ///< Nothing: the key was not there.
    std::optional<macplatform::PropertyValue> after;
};

struct FinderFlagChange {
    std::string path;
    FinderFlagName flag;
    int before = 0; ///< 0 and 1, or the field's value.
    int after = 0;
};

struct FileChange {
    std::string path;
    std::string what; ///< "created", "removed", "contents changed", "mode 0644 -> 0600", ...
};

struct Changes {
    std::vector<PreferenceChange> preferences;
    std::vector<FinderFlagChange> finderFlags;
    /// Other files, folders and links. A folder whose entries changed is not told, nor are AppleDouble
    /// sidecars, which are where a file system without attributes keeps Finder information.
    std::vector<FileChange> files;

    std::size_t Count() const { return preferences.size() + finderFlags.size() + files.size(); }
};

/// Takes the states over: property lists can be large.
Changes Compare(VolumeState&& before, VolumeState&& after);

/// Whether the item is there in both and holds the same bytes, as far as its inode, size and time tell.
bool IsUntouched(const VolumeState& before, const VolumeState& after, const std::string& path);

/// `(integer) 2`, or `(none)` for nothing; on one line and never longer than a few hundred bytes.
std::string Describe(const std::optional<macplatform::PropertyValue>& value);

/// `C custom icon (0x0400)`
std::string Describe(const FinderFlagName& flag);

/// `off` and `on`, or the number of a field.
std::string DescribeSetting(const FinderFlagName& flag, int setting);

} // namespace xcodhost
