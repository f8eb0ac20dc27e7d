#pragma once

/// @file
/// Writes binary property lists.

#include "BinaryKind.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace macplatform {

// Each function returns the encoded scalar object for a value.

std::string BooleanObject(bool value);
/// The magnitude of a negative integer must be at most 2^63.
std::string IntegerObject(std::uint64_t magnitude, bool isNegative);
std::string RealObject(double value);
/// The date is in seconds since 2001-01-01 00:00:00 UTC.
std::string DateObject(double seconds);
std::string DataObject(std::string_view bytes);
/// The text must be UTF-8.
std::string StringObject(std::string_view text);

/// Builds a binary property list from objects. Members must be added before their container.
class BinaryPlistWriter {
public:
    using Object = std::uint32_t; ///< The number of an object.

    /// Adds an encoded scalar object.
    Object Add(std::string_view scalar);
    /// Adds a container. The members of a dictionary are all keys, followed by all values in the same order.
    Object AddContainer(BinaryKind kind, const std::vector<Object>& members);

    /// Returns the bytes of the property list with this root. At least one object must have been added.
    std::string Bytes(Object root) const;

private:
    /// A range of `scalars`, or of `references` for a container.
    struct Extent {
        BinaryKind kind; ///< `kSimple` for every scalar: its bytes include its kind.
        std::size_t first, count;
    };

    std::vector<Extent> objects;
    std::string scalars;
    std::vector<Object> references;
};

} // namespace macplatform
