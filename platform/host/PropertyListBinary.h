#pragma once

#include <string>

namespace macplatform {

/// Why the parser, which works by recursion and takes shared objects apart, must not see this binary list;
/// empty when it may. Checks that every offset and reference lies inside the bytes and every key is a whole
/// text, nesting, cycles, and the number of values that come out.
std::string BinaryListDanger(const std::string& bytes);

/// What a list without danger holds that the parser would not keep, though it reads the list: a set, and a
/// text with a NUL, a lone surrogate or a byte that is not ASCII. Empty when there is nothing.
std::string BinaryListLoss(const std::string& bytes);

} // namespace macplatform
