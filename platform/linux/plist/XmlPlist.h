#pragma once

/// @file
/// Reads XML property lists as the Mac does, and edits them.

#include "PropertyValues.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace macplatform {

/// An XML property list, and the offsets of the root dictionary in its text.
struct XmlPlist {
    /// A key of the root dictionary and its value. A repeated key has several entries.
    struct Entry {
        std::string key;
        std::size_t begin, value, end; ///< Of the key, of the value, and behind the value.
    };

    PropertyValue root;
    std::vector<Entry> entries;
    std::size_t startTagEnd = 0; ///< The offset behind the start tag of the root dictionary.
    bool isEmptyTag = false;     ///< The root dictionary is `<dict/>`.
};

/// Reads the first element at or behind an offset, and ignores what follows it. Throws `PropertyListError`.
XmlPlist ReadXmlPlist(std::string_view text, std::size_t start);

/// Returns the XML element of a boolean, an integer, a real or a string.
std::string XmlElement(const PropertyValue& value);
std::string XmlKeyElement(const std::string& key);

/// Returns an XML property list with changed entries in the root dictionary. All other bytes are unchanged.
/// If a key is repeated, the last entry is changed; a removed key loses all entries. New entries follow the
/// last entry. Throws `PropertyListError` if the text cannot be read or has no root dictionary.
std::string EditXmlPlist(std::string_view text, std::size_t start, const PropertyListChanges& changes);

} // namespace macplatform
