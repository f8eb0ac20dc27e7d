#pragma once

/// What a startup volume holds at one moment: preferences, Finder flags, files.

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
    std::string path;    ///< On the Mac.
    std::string problem; ///< "is not a property list", or why else there are no values; empty when there are.
    std::map<std::string, macplatform::PropertyValue> values; ///< Top-level keys.
};

struct VolumeState {
    std::map<std::string, PreferencesFile> preferences; ///< By domain.
    std::map<std::string, VolumeItem> items;            ///< By path on the Mac; links are not followed.
    std::vector<std::string> problems;                  ///< One line for each item that cannot be read.
};

inline constexpr const char* kPreferencesFolder = "/Library/Preferences";

/// Whether the item at this path is a preferences file, told by its keys.
bool IsPreferencesPath(const std::string& macPath);

/// Reads the volume that lies in this folder and changes nothing. Throws ToolFault when the folder cannot be
/// read.
VolumeState ReadVolume(const std::string& volume);

} // namespace xcodhost
