#pragma once

#include <cstddef>

namespace macplatform {

constexpr std::size_t maxPropertyListBytes = std::size_t{64} << 20;
constexpr std::size_t maxPropertyListValues = std::size_t{1} << 20; ///< With all that is in them.
constexpr unsigned maxPropertyListDepth = 512;

} // namespace macplatform
