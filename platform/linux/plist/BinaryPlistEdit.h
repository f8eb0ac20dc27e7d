#pragma once

#include <map>
#include <optional>
#include <string>

namespace macplatform {

/// By key: a scalar as a whole object, or nothing for a key that goes away.
using BinaryPlistChanges = std::map<std::string, std::optional<std::string>>;

/// A binary list without danger, whose root is a dictionary, with changed entries. All other objects are
/// copied as they are, whatever they hold, shared ones once; what is not referred to any more is dropped.
/// Keys keep their order, and new ones follow in theirs. Nothing when an object is cut or of an unknown kind.
std::optional<std::string> EditBinaryPlist(const std::string& bytes, const BinaryPlistChanges& changes);

/// A dictionary without entries.
std::string EmptyBinaryPlist();

} // namespace macplatform
