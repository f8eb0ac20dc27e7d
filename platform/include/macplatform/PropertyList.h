#pragma once

/// @file
/// Property lists, XML or binary, read from and written to memory.
///
/// A file is refused, with the reason, when it is no property list, is nested deeper than 512 levels or is
/// larger than 64 MiB. Old-style text lists are not read.

#include <cstdint>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// What a file was written as; changes are written back as the same.
enum class PropertyListFormat { Xml, Binary };

/// One value, taken out of its list: a copy that owns what it holds.
struct PropertyValue {
    /// Those of both forms; only binary lists have a `Uid`.
    enum class Kind { None, Boolean, Integer, Real, Text, Data, Date, Uid, Array, Dictionary };
    Kind kind = Kind::None;   ///< Says which of the other members mean something.
    std::string text;         ///< The text; for scalars as a person would write them; data in hexadecimal.
    std::int64_t integer = 0; ///< Boolean and Integer.
    std::vector<PropertyValue> items;  ///< Array.
    std::vector<std::string> keys;     ///< Dictionary, in the order of the file...
    std::vector<PropertyValue> values; ///< ...with the value of each key at the same place.

    const PropertyValue* Find(const std::string& key) const; ///< Null when there is no such key.
    const char* KindName() const; ///< "string", "integer", ... as the XML form names it.
    std::string Describe() const; ///< One line; texts in quotation marks.
};
///@{
/// By kind and content; dictionaries with their keys in another order differ.
bool operator==(const PropertyValue& left, const PropertyValue& right);
inline bool operator!=(const PropertyValue& left, const PropertyValue& right) { return !(left == right); }
///@}

/// A file, or why it could not be read.
struct PropertyListFile {
    PropertyValue root;                                     ///< Of kind `None` when there is an error.
    PropertyListFormat format = PropertyListFormat::Binary; ///< `Binary` too when there is an error.
    std::string error;   ///< Empty, or why the file could not be read, as one line without the path.
    int errorNumber = 0; ///< errno where the system refused; ENOENT for a file that is not there.
};

/// Reads a file of this machine (not of the startup volume).
PropertyListFile ReadPropertyList(const std::string& path);

} // namespace macplatform
#pragma GCC visibility pop
