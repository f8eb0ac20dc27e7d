#pragma once

/// @file
/// Reads property-list files into values in memory, as the Mac reads them: XML, binary and old-style text.
/// Nothing here writes.
///
/// A file is rejected with an error text if it is no regular file or no property list, or if it exceeds a
/// limit: 64 MiB, 512 nested arrays, sets and dictionaries, 1,048,576 values (keys and every reference to a
/// shared value of a binary property list count), 256 MiB of strings and data in memory.

#include <cstdint>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// The format of a property-list file.
enum class PropertyListFormat { kXml, kBinary, kOldStyle };

/// One value of a property list. The value owns its contents.
///
/// A string is UTF-8, in which a lone surrogate is encoded like any other character with three bytes. NUL
/// characters are kept.
struct PropertyValue {
    /// The types of all formats. Only binary property lists have a `kNull` or a `kSet`. `kNone` means that
    /// there is no value.
    enum class Kind {
        kNone,
        kNull,
        kBoolean,
        kInteger,
        kReal,
        kString,
        kData,
        kDate,
        kUid,
        kArray,
        kSet,
        kDictionary
    };
    Kind kind = Kind::kNone;  ///< Determines which of the other members are valid.
    std::string text;         ///< The string; other scalars in readable notation; data in hexadecimal.
    std::int64_t integer = 0; ///< kBoolean, kInteger and kUid: the low 64 bits. `text` has all digits.
    double real = 0;          ///< kReal; kDate: seconds since 2001-01-01 00:00:00 UTC.
    std::vector<PropertyValue> items; ///< kArray and kSet: the items.
    /// kDictionary: the keys in the order of the file, each once. A binary property list can have keys that
    /// are not strings. Such a key begins with `kOtherKeyMark`, followed by its kind and its description.
    std::vector<std::string> keys;
    std::vector<PropertyValue> values; ///< kDictionary: the value of each key, at the index of the key.

    static constexpr char kOtherKeyMark = '\xFF'; ///< No string has this byte.

    const PropertyValue* Find(const std::string& key) const; ///< Returns null if the key is missing.
    /// Returns the name of the XML element, for instance "string" or "dict". Returns "boolean", "uid",
    /// "set", "null" or "none" for the other kinds.
    const char* KindName() const;
    /// Returns one line of text. Strings are in quotation marks, with escaped control characters.
    std::string Describe() const;
};
///@{
/// Compares the kinds and the contents. The order of keys and items matters. 0 and -0.0 differ. Two NaNs are
/// equal.
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

/// Returns the string of a `PropertyValue` with each lone surrogate as `\uXXXX`. The result is UTF-8.
std::string EscapeSurrogates(const std::string& text);

/// Reads a property-list file. The path is a path of this machine, not of the startup volume.
PropertyListFile ReadPropertyList(const std::string& path);

} // namespace macplatform
#pragma GCC visibility pop
