#pragma once

/// Declares the state of a startup volume at one moment: preferences, Finder flags and files.

#include <macplatform/PropertyList.h>

#include <cstdint>
#include <map>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace xcodhost {

/// An item of the volume other than its root.
struct VolumeItem {
    mode_t mode = 0;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< Nanoseconds since 1970-01-01 UTC.
    std::string linkTarget;
    std::uint16_t finderFlags = 0;
};

/// One property list of `/Library/Preferences`.
struct PreferencesFile {
    std::string path; ///< On the Mac.
    /// Why the file cannot be read: "is not a property list". Empty if the file has been read.
    std::string problem;
    std::map<std::string, macplatform::PropertyValue> values; ///< By top-level key.
};

/// The state of a volume.
struct VolumeState {
    std::map<std::string, PreferencesFile> preferences; ///< By domain.
    std::map<std::string, VolumeItem> items;            ///< By path on the Mac. Links are not followed.
    std::vector<std::string> problems;                  ///< One line for each item that cannot be read.
};

inline constexpr const char* kPreferencesFolder = "/Library/Preferences";

/// Returns whether the path is the path of a preferences file. `VolumeState::preferences` contains these
/// files.
bool IsPreferencesPath(const std::string& macPath);

/// Reads the volume in a directory without changing it. Records an item that cannot be read in `problems`.
/// Removes the setting of the startup volume. Throws ToolFault if the directory cannot be used as the startup
/// volume.
VolumeState ReadVolume(const std::string& volume);

} // namespace xcodhost
