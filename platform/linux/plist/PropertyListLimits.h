#pragma once

#include <cstddef>

namespace macplatform {

constexpr std::size_t kMaxPropertyListBytes = std::size_t{64} << 20;
constexpr std::size_t kMaxPropertyListValues = std::size_t{1} << 20; ///< With all that is in them.
constexpr unsigned kMaxPropertyListDepth = 512;

} // namespace macplatform
