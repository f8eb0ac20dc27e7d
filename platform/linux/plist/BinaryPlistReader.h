#pragma once

#include "BinaryKind.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace macplatform {

/// The object table of a binary property list, looked at without making anything of it. Whatever the bytes
/// are, nothing outside them is read.
class BinaryPlistReader {
public:
    /// The bytes must outlive this.
    explicit BinaryPlistReader(const std::string& source) : bytes(source) {}

    /// To be called first. False when the table does not lie inside the bytes, or is too large.
    bool ReadTrailer();

    std::size_t ObjectCount() const { return objectCount; }
    std::size_t Root() const { return root; }

    /// Nothing when the object does not lie before the offset table, as far as its first bytes tell.
    std::optional<BinaryKind> KindOf(std::size_t object) const;
    /// The references of an array, set or dictionary (its keys, then its values); none for a scalar; nothing
    /// when they lie outside.
    std::optional<std::vector<std::size_t>> Children(std::size_t object) const;
    /// In UTF-8; nothing when the object is no text or the parser would not keep each of its characters: one
    /// with a NUL, a lone surrogate or a byte that is not ASCII.
    std::optional<std::string> StringOf(std::size_t object) const;
    /// The whole object; nothing when it is a container, of an unknown kind, or lies outside.
    std::optional<std::string_view> ScalarBytes(std::size_t object) const;

private:
    /// Where the members of an object begin, and how many there are.
    struct Extent {
        BinaryKind kind;
        std::size_t at, first, count;
    };

    std::size_t Number(std::size_t at, unsigned width) const;
    std::optional<Extent> ExtentOf(std::size_t object) const;

    const std::string& bytes;
    unsigned offsetWidth = 0, referenceWidth = 0;
    std::size_t objectCount = 0, root = 0, table = 0;
};

} // namespace macplatform
