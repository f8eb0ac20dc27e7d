#pragma once

/// @file
/// The limits of every property list that the platform reads, and the error that rejects a property list.

#include <cstddef>
#include <stdexcept>

namespace macplatform {

constexpr std::size_t kMaxPropertyListBytes = std::size_t{64} << 20;
constexpr std::size_t kMaxPropertyListValues = std::size_t{1} << 20; ///< At all levels together.
constexpr unsigned kMaxPropertyListDepth = 512; ///< Nested arrays, sets and dictionaries.
/// Strings and data in memory. A binary property list can share a string between many references.
constexpr std::size_t kMaxPropertyListText = std::size_t{256} << 20;

constexpr char kTooLarge[] = "larger than 64 MiB";
constexpr char kTooManyValues[] = "more than 1048576 values";
constexpr char kTooDeep[] = "nested deeper than 512 levels";

/// The bytes are no property list, or the property list exceeds a limit. The message is one line without a
/// path.
struct PropertyListError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace macplatform
