#pragma once

/// @file
/// Declares a function that stores changes in the preferences file of a domain.

#include "plist/PropertyValues.h"

#include <string>

namespace macplatform {

/// Why nothing was stored, or what the stored file has lost: each one line with the path, or an empty string.
struct StoreResult {
    std::string failure, lost;
};

/// Applies the changes, with string and number values, to the preferences file of the domain on the startup
/// volume: the file for any user and the current host. Other keys, their bytes, their order and the format of
/// the file do not change, except that XML becomes UTF-8 and an old-style property list becomes XML; `lost`
/// reports this. A new file is binary. A file without keys is removed. If the changes have no effect, the
/// file is not written.
///
/// The function locks the directory of the file, waits at most five seconds for the lock, and replaces the
/// file atomically. `failure` is empty after the changes are on the disk. After a failure the file is
/// unchanged, except that it may have the new contents if only the flush of the directory failed.
StoreResult StorePreferences(const std::string& domain, const PropertyListChanges& changes);

} // namespace macplatform
