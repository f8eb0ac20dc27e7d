#pragma once

/// @file
/// Reads XML property lists as the Mac does, and edits them.

#include "PropertyValues.h"

#include <cstddef>
#include <optional>
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

/// Returns the value of the contents of a scalar element, or no value if the element cannot have this text.
///@{
/// White space before the sign and before the digits is accepted, but not behind the digits.
std::optional<PropertyValue> IntegerFrom(std::string_view text);
/// A number that is too large is infinite.
std::optional<PropertyValue> RealFrom(const std::string& text);
/// Numbers outside their range count on: month 13 is January of the next year.
std::optional<PropertyValue> DateFrom(std::string_view text);
/// Ignores characters that are not base-64 digits, and digits that do not form a whole group of four.
PropertyValue DataFrom(std::string_view text);
///@}

} // namespace macplatform
