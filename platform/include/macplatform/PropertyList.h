#pragma once

/// @file
/// Reads property-list files, XML or binary, into values in memory. Nothing here writes.
///
/// A file is rejected with an error text if it is no regular file or no property list, is nested deeper than
/// 512 levels, has more than 1,048,576 values, has a key twice in one dictionary or is larger than 64 MiB.
/// Old-style text property lists are not supported.

#include <cstdint>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// The format of a property-list file.
enum class PropertyListFormat { kXml, kBinary };

/// One value of a property list. The value owns its contents.
struct PropertyValue {
    /// The types of both formats. Only binary property lists have a `kUid`. `kNone` means that there is no
    /// value.
    enum class Kind { kNone, kBoolean, kInteger, kReal, kString, kData, kDate, kUid, kArray, kDictionary };
    Kind kind = Kind::kNone;  ///< Determines which of the other members are valid.
    std::string text;         ///< The string; other scalars in readable notation; data in hexadecimal.
    std::int64_t integer = 0; ///< kBoolean and kInteger. An integer of 2^63 or more wraps to a negative one.
    std::vector<PropertyValue> items;  ///< kArray: the items.
    std::vector<std::string> keys;     ///< kDictionary: the keys in the order of the file.
    std::vector<PropertyValue> values; ///< kDictionary: the value of each key, at the index of the key.

    const PropertyValue* Find(const std::string& key) const; ///< Returns null if the key is missing.
    /// Returns the name of the XML element, for instance "string" or "dict". Returns "boolean", "uid" or
    /// "none" for the other kinds.
    const char* KindName() const;
    std::string Describe() const; ///< Returns one line of text, with strings in quotation marks.
};
///@{
/// Compares the kinds and the contents. The order of the keys of a dictionary matters.
bool operator==(const PropertyValue& left, const PropertyValue& right);
inline bool operator!=(const PropertyValue& left, const PropertyValue& right) { return !(left == right); }
///@}

/// The contents of a file, or the reason why the file could not be read.
struct PropertyListFile {
    PropertyValue root;                                      ///< Of kind `kNone` if there is an error.
    PropertyListFormat format = PropertyListFormat::kBinary; ///< Also `kBinary` if there is an error.
    std::string error; ///< The reason in one line without the path; empty if the file was read.
    /// The errno of a file that could not be read as a whole: ENOENT if it is missing, EFBIG if it is too
    /// large, EISDIR or EINVAL if it is no regular file. 0 for bytes that are no property list.
    int errorNumber = 0;
};

/// Reads a property-list file. The path is a path of this machine, not of the startup volume.
PropertyListFile ReadPropertyList(const std::string& path);

} // namespace macplatform
#pragma GCC visibility pop
