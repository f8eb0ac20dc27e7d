#pragma once

/// @file
/// Reads binary property lists. Everything here throws `PropertyListError` for damaged bytes.

#include <macplatform/PropertyList.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace macplatform {

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

constexpr bool IsContainer(BinaryKind kind) {
    return kind == BinaryKind::kArray || kind == BinaryKind::kSet || kind == BinaryKind::kDictionary;
}

/// Accesses the objects by their numbers, which are less than `Count()`. Never reads outside the bytes.
class BinaryPlistObjects {
public:
    /// Checks the trailer. The source must outlive this object.
    explicit BinaryPlistObjects(const std::string& source);

    std::size_t Count() const { return objectCount; }
    std::size_t Root() const { return root; }
    BinaryKind KindOf(std::size_t object) const { return ExtentOf(object).kind; }
    /// Returns the number of members of a container. A key and its value count as two.
    std::size_t MemberCount(std::size_t object) const;
    /// Returns the numbers of the members. Those of a dictionary are all keys, then all values.
    std::vector<std::size_t> Members(std::size_t object) const;
    std::string_view ScalarBytes(std::size_t object) const; ///< Returns all bytes of a scalar object.
    PropertyValue ScalarValue(std::size_t object) const;

private:
    /// The position of an object in the bytes.
    struct Extent {
        BinaryKind kind;
        unsigned low;      ///< The lower bits of the marker.
        std::size_t at;    ///< The offset of the object.
        std::size_t first; ///< The offset of the members or of the value.
        std::size_t count; ///< The count that the object has: of members, bytes or UTF-16 units.
    };

    std::size_t Number(std::size_t at, std::size_t width) const;
    Extent ExtentOf(std::size_t object) const;
    std::size_t SizeOf(const Extent& scalar) const;

    const std::string& bytes;
    std::size_t offsetWidth, referenceWidth, objectCount, root;
    std::size_t table; ///< The offset of the offset table.
};

/// Reads and validates a binary property list: every offset and reference is inside the bytes, no object
/// contains itself, and the limits of PropertyListLimits.h hold. A shared object counts once for each
/// reference to it. If a key is repeated, its first value counts.
PropertyValue ReadBinaryPlist(const std::string& bytes);

} // namespace macplatform
