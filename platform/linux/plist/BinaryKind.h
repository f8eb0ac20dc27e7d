#pragma once

/// @file
/// The markers of the objects in a binary property list.

namespace macplatform {

/// The upper four bits of the first byte of an object. The lower four bits are a count, or the power of two
/// of the number of bytes.
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

} // namespace macplatform
