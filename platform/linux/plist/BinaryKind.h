#pragma once

namespace macplatform {

/// What an object of a binary property list is: the upper half of its first byte.
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

/// Whether an object of the kind holds others.
inline bool IsContainer(BinaryKind kind) {
    return kind == BinaryKind::kArray || kind == BinaryKind::kSet || kind == BinaryKind::kDictionary;
}

} // namespace macplatform
