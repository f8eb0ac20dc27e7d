#pragma once

/// @file
/// Changes entries of the root dictionary of a binary property list. All other objects keep their bytes.

#include <map>
#include <optional>
#include <string>

namespace macplatform {

/// The new value of each key as an encoded scalar object. A key without a value is removed.
using BinaryPlistChanges = std::map<std::string, std::optional<std::string>>;

/// Returns a copy of a validated binary property list with changed entries in the root dictionary. All other
/// objects are copied byte for byte, and a shared object is copied once. Objects without a reference are
/// dropped. The existing keys keep their order, and new keys follow in their own order. Returns no value if
/// the root is not a dictionary, or if an object is incomplete or of an unknown kind.
std::optional<std::string> EditBinaryPlist(const std::string& bytes, const BinaryPlistChanges& changes);

/// Returns a binary property list whose root is an empty dictionary.
std::string EmptyBinaryPlist();

} // namespace macplatform
