#pragma once

/// @file
/// Stores changes in the preferences file of a domain.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace macplatform {

using PreferenceValue = std::variant<std::string, std::int64_t, double>; ///< A string is UTF-8 without NUL.
/// The new value of each key. A key without a value is removed from the file.
using PreferenceChanges = std::map<std::string, std::optional<PreferenceValue>>;

/// Applies the changes to the any-user, current-host file of the domain on the startup volume. Other keys,
/// their order and the format do not change. A new file is binary. A file without keys is removed. If the
/// changes have no effect, nothing is written.
///
/// The file is replaced atomically, under a lock on its directory, and is on the disk when the function
/// returns. Returns an empty string, or the reason why nothing was stored: one line with the path. The file
/// is unchanged then.
std::string StorePreferences(const std::string& domain, const PreferenceChanges& changes);

} // namespace macplatform
