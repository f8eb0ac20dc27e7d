#pragma once

/// @file
/// Changes entries of the root dictionary of a binary property list. All other objects keep their bytes.

#include "PropertyValues.h"

#include <string>

namespace macplatform {

/// Returns a copy of a binary property list with changed entries in the root dictionary. All other objects
/// are copied byte for byte, and a shared object is copied once. Objects without a reference are dropped. If
/// a changed key is repeated, only its first entry remains. The existing keys keep their order, and new keys
/// follow in their own order. Throws `PropertyListError` if the root is not a dictionary.
/// `ReadBinaryPlist` must accept the bytes.
std::string EditBinaryPlist(const std::string& bytes, const PropertyListChanges& changes);

/// Returns a binary property list whose root is an empty dictionary.
std::string EmptyBinaryPlist();

} // namespace macplatform
