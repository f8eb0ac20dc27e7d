#pragma once

/// @file
/// Reads, edits and writes binary property lists. Everything here throws `PropertyListError` for damaged
/// bytes.

#include "PropertyValues.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace macplatform {

/// Reads and validates a binary property list: every offset and reference is inside the bytes, no object
/// contains itself, and the limits of PropertyValues.h hold. A shared object counts once for each
/// reference to it. If a key is repeated, its first value counts.
PropertyValue ReadBinaryPlist(const std::string& bytes);

/// Returns a copy of a binary property list with changed entries in the root dictionary. All other objects
/// are copied byte for byte, and a shared object is copied once. Objects without a reference are dropped. If
/// a changed key is repeated, only its first entry remains. The existing keys keep their order, and new keys
/// follow in their own order. Throws `PropertyListError` if the root is not a dictionary.
/// `ReadBinaryPlist` must accept the bytes.
std::string EditBinaryPlist(const std::string& bytes, const PropertyListChanges& changes);

/// Returns a binary property list whose root is an empty dictionary.
std::string EmptyBinaryPlist();

/// The marker of an object: the upper four bits of its first byte. The lower four bits are a count, or the
/// power of two of the number of bytes.
enum class BinaryKind : unsigned {
    kSimple = 0,
    kInteger = 1,
    kReal = 2,
    kDate = 3,
    kData = 4,
    kLatin1String = 5,
    kUtf16String = 6,
    kUid = 8,
    kArray = 0xA,
    kSet = 0xC,
    kDictionary = 0xD
};

constexpr unsigned kNullMarker = 0x00, kFalseMarker = 0x08, kTrueMarker = 0x09; ///< Of kind `kSimple`.
constexpr unsigned kCountFollows = 0x0F; ///< The count is an integer object behind the marker.

/// An object. The views point into the property list.
struct BinaryObject {
    BinaryKind kind;
    unsigned low;                     ///< The lower bits of the marker.
    std::string_view bytes;           ///< All bytes of a scalar.
    std::string_view contents;        ///< The bytes of a scalar behind its marker and its count.
    std::vector<std::size_t> members; ///< The numbers of the members. Of a dictionary: all keys, all values.

    bool IsString() const { return kind == BinaryKind::kLatin1String || kind == BinaryKind::kUtf16String; }
    bool IsContainer() const {
        return kind == BinaryKind::kArray || kind == BinaryKind::kSet || kind == BinaryKind::kDictionary;
    }
    PropertyValue ScalarValue() const;
};

/// Finds the objects by their numbers, which are less than `Count()`. Never reads outside the bytes.
class BinaryPlistObjects {
public:
    /// Checks the trailer. The source must outlive this object.
    explicit BinaryPlistObjects(std::string_view source);

    std::size_t Count() const { return objectCount; }
    std::size_t Root() const { return root; }
    BinaryObject At(std::size_t number) const;

private:
    std::size_t Number(std::size_t at, std::size_t width) const;
    std::size_t LongCount(std::size_t& at) const;
    std::size_t SizeOf(const BinaryObject& scalar, std::size_t count) const;
    std::vector<std::size_t> Members(std::size_t first, std::size_t count) const;

    std::string_view bytes;
    std::size_t offsetWidth, referenceWidth, objectCount, root;
    std::size_t table; ///< The offset of the offset table.
};

} // namespace macplatform
