#pragma once

#include <cstddef>
#include <string>

namespace macplatform {

constexpr std::size_t maxPropertyListBytes = std::size_t{64} << 20;
constexpr unsigned maxPropertyListDepth = 512;

/// Why the parser, which works by recursion and takes shared objects apart, must not see these bytes; empty
/// when it may. Checks nesting, cycles and the number of values that come out, and of the binary form that
/// every offset and reference lies inside the bytes and every key is a whole text.
std::string PropertyListDanger(const std::string& bytes);

/// What a binary list without danger holds that the parser would not keep, though it reads the list: a set,
/// and a text with a NUL, a lone surrogate or a byte that is not ASCII. Empty when there is nothing.
std::string PropertyListLoss(const std::string& bytes);

} // namespace macplatform
