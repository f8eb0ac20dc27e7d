#pragma once

/// @file
/// The kinds of objects in a binary property list.

namespace macplatform {

/// The kind of an object of a binary property list: the upper four bits of the object's first byte.
enum class BinaryKind : unsigned char {
    kSimple = 0,
    kInteger = 1,
    kReal = 2,
    kDate = 3,
    kData = 4,
    kAsciiString = 5,
    kUtf16String = 6,
    kUid = 8,
    kArray = 0xA,
    kSet = 0xC,
    kDictionary = 0xD
};

/// Returns whether an object of the kind contains other objects.
inline bool IsContainer(BinaryKind kind) {
    return kind == BinaryKind::kArray || kind == BinaryKind::kSet || kind == BinaryKind::kDictionary;
}

} // namespace macplatform
