#pragma once

#include <string>
#include <vector>

/// Returns a binary property list that consists of these encoded objects. Offsets and references have one
/// byte. The first object is the root. The objects and the header of 8 bytes must have less than 256 bytes
/// together.
inline std::string BinaryPlist(const std::vector<std::string>& objects) {
    std::string bytes = "bplist00", table;
    for (const std::string& object : objects) {
        table += static_cast<char>(bytes.size());
        bytes += object;
    }
    const auto tableAt = static_cast<char>(bytes.size());
    bytes += table + std::string(6, '\0') + "\x01\x01" + std::string(7, '\0') +
             static_cast<char>(objects.size()) + std::string(8, '\0') + std::string(7, '\0') + tableAt;
    return bytes;
}
