#pragma once

/// One preference domain's file on disk.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace macplatform {

using PreferenceValue = std::variant<std::string, std::int64_t, double>; ///< Text is UTF-8 without NUL.
/// New values by their keys; nothing removes the key.
using PreferenceChanges = std::map<std::string, std::optional<PreferenceValue>>;

/// Lays the changes over what stands in the any-user, current-host file of the domain on the startup volume.
/// Other keys, their order and the format (binary for a new file) stay; a file without keys is removed; where
/// nothing would change, nothing is written.
///
/// The file is replaced in one step, under a lock on its folder, and is on the disk when this returns.
/// Answers an empty text, or why nothing was stored, as one line with the path; the file then stands as it
/// was.
std::string StorePreferences(const std::string& domain, const PreferenceChanges& changes);

} // namespace macplatform
