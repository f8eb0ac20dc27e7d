#pragma once

/// @file
/// Reads and edits the bytes of a property list in any format. The functions throw `PropertyListError`.

#include "PropertyValues.h"

#include <cstddef>
#include <string>

namespace macplatform {

/// A property list in UTF-8. The file may have another encoding.
struct PropertyListText {
    std::string text;
    std::size_t start = 0;     ///< The offset behind a byte order mark.
    std::string convertedFrom; ///< The name of the encoding of the file. Empty for UTF-8.
};
/// Decodes UTF-16 and UTF-32 with a byte order mark, and every encoding that an XML declaration names at the
/// start of the file. Converted text declares UTF-8. Rejects an unknown encoding, and bytes that are invalid
/// in it. UTF-8 is not checked.
PropertyListText DecodePropertyListText(const std::string& bytes);

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
