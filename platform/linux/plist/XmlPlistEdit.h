#pragma once

#include "PropertyValues.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace macplatform {

/// Returns the XML element of a boolean, an integer, a real or a string.
std::string XmlElement(const PropertyValue& value);
std::string XmlKeyElement(const std::string& key);

/// Returns an XML property list with changed entries in the root dictionary. All other bytes are unchanged.
/// If a key is repeated, the last entry is changed; a removed key loses all entries. New entries follow the
/// last entry. Throws `PropertyListError` if the text cannot be read or has no root dictionary.
std::string EditXmlPlist(std::string_view text, std::size_t start, const PropertyListChanges& changes);

} // namespace macplatform
