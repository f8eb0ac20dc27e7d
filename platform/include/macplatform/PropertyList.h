#pragma once

/// @file
/// Reads property-list files, XML or binary, into values in memory. Nothing here writes.
///
/// A file is rejected, with the reason, if it is no regular file or no property list, is nested deeper than
/// 512 levels, has more than 1,048,576 values, has a key twice in one dictionary or is larger than 64 MiB.
/// Old-style text property lists are not read.

#include <cstdint>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// The format of a property-list file.
enum class PropertyListFormat { kXml, kBinary };

/// One value, taken out of its list: a copy that owns what it holds.
struct PropertyValue {
    /// The types of both formats. Only binary property lists have a `kUid`. `kNone` means that there is no
    /// value.
    enum class Kind { kNone, kBoolean, kInteger, kReal, kString, kData, kDate, kUid, kArray, kDictionary };
    Kind kind = Kind::kNone;  ///< Says which of the other members mean something.
    std::string text;         ///< The text; for scalars as a person would write them; data in hexadecimal.
    std::int64_t integer = 0; ///< kBoolean and kInteger; an integer from 2^63 on wraps to a negative one.
    std::vector<PropertyValue> items;  ///< kArray.
    std::vector<std::string> keys;     ///< kDictionary, in the order of the file...
    std::vector<PropertyValue> values; ///< ...with the value of each key at the same place.

    const PropertyValue* Find(const std::string& key) const; ///< Null when there is no such key.
    /// The element name in XML, "string" or "dict" for instance; "boolean", "uid" and "none" for the others.
    const char* KindName() const;
    std::string Describe() const; ///< One line; texts in quotation marks.
};
///@{
/// By kind and content; dictionaries with their keys in another order differ.
bool operator==(const PropertyValue& left, const PropertyValue& right);
inline bool operator!=(const PropertyValue& left, const PropertyValue& right) { return !(left == right); }
///@}

/// A file, or why it could not be read.
struct PropertyListFile {
    PropertyValue root;                                      ///< Of kind `kNone` when there is an error.
    PropertyListFormat format = PropertyListFormat::kBinary; ///< `kBinary` too when there is an error.
    std::string error; ///< Empty, or why the file could not be read, as one line without the path.
    /// The errno of a file that could not be read as a whole: ENOENT if it is missing, EFBIG if it is too
    /// large, EISDIR or EINVAL if it is no regular file. 0 for bytes that are no property list.
    int errorNumber = 0;
};

/// Reads a file of this machine (not of the startup volume).
PropertyListFile ReadPropertyList(const std::string& path);

} // namespace macplatform
#pragma GCC visibility pop
