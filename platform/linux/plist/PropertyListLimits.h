#pragma once

/// @file
/// The limits of every property list that the platform reads. A property list beyond a limit is rejected.

#include <cstddef>

namespace macplatform {

constexpr std::size_t kMaxPropertyListBytes = std::size_t{64} << 20;
constexpr std::size_t kMaxPropertyListValues = std::size_t{1} << 20; ///< At all levels together.
constexpr unsigned kMaxPropertyListDepth = 512; ///< Nested arrays, sets and dictionaries.

} // namespace macplatform
