#pragma once

#include <string>

namespace macplatform {

/// Validates a binary property list before the parser reads it, because the parser is recursive and copies a
/// shared object for each reference.
/// Returns an empty string, or the reason why the property list is rejected.
///
/// Checks that every offset and reference is inside the bytes, that every key is a valid string and occurs
/// once in its dictionary, that no object contains itself, and that the nesting and the number of values are
/// within the limits of PropertyListLimits.h.
std::string ValidateBinaryPlist(const std::string& bytes);

} // namespace macplatform
