#pragma once

#include "BinaryKind.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace macplatform {

// Scalars as whole objects.

std::string BooleanObject(bool value);
std::string IntegerObject(std::uint64_t magnitude, bool isNegative);
std::string RealObject(double value);
/// In seconds since 2001, universal time.
std::string DateObject(double seconds);
std::string DataObject(std::string_view bytes);
/// The text must be UTF-8.
std::string StringObject(std::string_view text);

/// Makes a binary property list out of objects, members before the container that holds them.
class BinaryPlistWriter {
public:
    using Object = std::uint32_t;

    Object Add(std::string_view scalar);
    /// A dictionary's members are all its keys, and then the values in the same order.
    Object AddContainer(BinaryKind kind, const std::vector<Object>& members);

    std::string Bytes(Object root) const;

private:
    /// A part of `scalars`, or of `references`.
    struct Extent {
        BinaryKind kind; ///< Simple for every scalar, whose bytes tell the rest.
        std::size_t first, count;
    };

    std::vector<Extent> objects;
    std::string scalars;
    std::vector<Object> references;
};

} // namespace macplatform
