#pragma once

/// @file
/// Declares a function that stores changes in the preferences file of a domain.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace macplatform {

using PreferenceValue = std::variant<std::string, std::int64_t, double>; ///< A string is UTF-8 without NUL.
/// The new value of each key. A key without a value is removed from the file.
using PreferenceChanges = std::map<std::string, std::optional<PreferenceValue>>;

/// Applies the changes to the preferences file of the domain on the startup volume: the file for any user and
/// the current host. Other keys, the order of the keys and the format of the file do not change. A new file
/// is binary. A file without keys is removed. If the changes have no effect, the file is not written.
///
/// The function locks the directory of the file, waits at most five seconds for the lock, and replaces the
/// file atomically. Returns an empty string after the changes are on the disk. Otherwise returns one line
/// with the reason and the path or the domain. After a failure the file is unchanged, except that it may have
/// the new contents if only the flush of the directory failed.
std::string StorePreferences(const std::string& domain, const PreferenceChanges& changes);

} // namespace macplatform
