#pragma once

/// @file
/// Reads and edits the bytes of a property list in any format. The functions throw `PropertyListError`.

#include "PropertyListLimits.h"
#include "PropertyValues.h"

#include <macplatform/PropertyList.h>

#include <string>

namespace macplatform {

struct ParsedPropertyList {
    PropertyValue root;
    PropertyListFormat format;
};
ParsedPropertyList ParsePropertyList(const std::string& bytes);

struct EditedPropertyList {
    std::string bytes;
    PropertyValue root; ///< The root dictionary of the bytes.
    std::string lost;   ///< One line about what the bytes do not keep, or an empty string.
};
/// Changes entries of the root dictionary. Binary and XML property lists keep the bytes of all other values.
/// XML in another encoding is converted to UTF-8, and an old-style property list to XML. The bytes that are
/// returned have been read again and compared.
EditedPropertyList EditPropertyList(const std::string& bytes, const PropertyListChanges& changes);

} // namespace macplatform
