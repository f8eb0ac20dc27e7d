#pragma once

/// @file
/// Reads old-style property lists: `{ key = value; }`, `( a, b )`, `<0a0b>`, "quoted" and bare strings.

#include <macplatform/PropertyList.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace macplatform {

/// Reads the text from an offset to its end. The braces around the root dictionary may be missing, and a text
/// without any value is an empty dictionary. Throws `PropertyListError`.
PropertyValue ReadOldStylePlist(std::string_view text, std::size_t start);

/// Returns an XML property list with a value that `ReadOldStylePlist` returned.
std::string XmlFromOldStyle(const PropertyValue& root);

} // namespace macplatform
