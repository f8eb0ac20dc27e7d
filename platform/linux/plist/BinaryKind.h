#pragma once

namespace macplatform {

/// What an object of a binary property list is: the upper half of its first byte.
enum class BinaryKind : unsigned char {
    Simple = 0,
    Integer = 1,
    Real = 2,
    Date = 3,
    Data = 4,
    AsciiText = 5,
    Utf16Text = 6,
    Uid = 8,
    Array = 0xA,
    Set = 0xC,
    Dictionary = 0xD
};

/// Whether an object of the kind holds others.
inline bool IsContainer(BinaryKind kind) {
    return kind == BinaryKind::Array || kind == BinaryKind::Set || kind == BinaryKind::Dictionary;
}

} // namespace macplatform
