#pragma once

#include "BinaryKind.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace macplatform {

/// Reads the objects of a binary property list by their numbers, which must be less than `ObjectCount()`. The
/// reader accepts any bytes and never reads outside them. Functions that return an optional return no value
/// for an object that is damaged.
class BinaryPlistReader {
public:
    /// The source must outlive the reader.
    explicit BinaryPlistReader(const std::string& source) : bytes(source) {}

    /// Reads the trailer. Must be called before the other functions. Returns false if the offset table is not
    /// inside the bytes or has too many objects.
    bool ReadTrailer();

    std::size_t ObjectCount() const { return objectCount; }
    std::size_t Root() const { return root; }

    /// Returns the kind of an object. Checks only that the first bytes of the object, which have its kind and
    /// count, are before the offset table.
    std::optional<BinaryKind> KindOf(std::size_t object) const;
    /// Returns the numbers of the members of an array, a set or a dictionary (all keys, then all values). A
    /// scalar has no members.
    std::optional<std::vector<std::size_t>> Children(std::size_t object) const;
    /// Returns a string object in UTF-8. Returns no value if the object is not a string, or if the parser
    /// would not keep all of its characters: a string with a NUL or a lone surrogate, or an ASCII string with
    /// a byte that is not ASCII.
    std::optional<std::string> StringOf(std::size_t object) const;
    /// Returns all bytes of a scalar object.
    /// Returns no value for a container or an object of an unknown kind.
    std::optional<std::string_view> ScalarBytes(std::size_t object) const;

private:
    /// The position of an object in the bytes.
    struct Extent {
        BinaryKind kind;
        std::size_t at;    ///< The offset of the object.
        std::size_t first; ///< The offset of the members or of the value.
        std::size_t count; ///< The count that the object has: of members, bytes or UTF-16 units.
    };

    std::size_t Number(std::size_t at, unsigned width) const;
    std::optional<Extent> ExtentOf(std::size_t object) const;

    const std::string& bytes;
    unsigned offsetWidth = 0, referenceWidth = 0;
    std::size_t objectCount = 0, root = 0;
    std::size_t table = 0; ///< The offset of the offset table.
};

} // namespace macplatform
