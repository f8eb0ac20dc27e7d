#pragma once

/// @file
/// Writes binary property lists.

#include "BinaryPlistReader.h"

#include <macplatform/PropertyList.h>

#include <cstdint>
#include <string>
#include <vector>

namespace macplatform {

/// Returns the encoded object of a boolean, an integer of 64 bits, a real or a string.
std::string ScalarObject(const PropertyValue& value);
std::string StringObject(const std::string& utf8);

/// Builds a binary property list from objects. Members must be added before their container.
class BinaryPlistWriter {
public:
    using Object = std::uint32_t; ///< The number of an object.

    Object Add(std::string scalar); ///< Adds an encoded scalar object.
    /// Adds a container. The members of a dictionary are all keys, followed by all values in the same order.
    Object AddContainer(BinaryKind kind, std::vector<Object> members);
    /// Returns the bytes of the property list with this root.
    std::string Bytes(Object root) const;

private:
    struct EncodedObject {
        std::string bytes; ///< Without the members of a container.
        std::vector<Object> members;
    };
    std::vector<EncodedObject> objects;
};

} // namespace macplatform
