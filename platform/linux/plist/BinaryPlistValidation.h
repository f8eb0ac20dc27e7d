#pragma once

#include <string>

namespace macplatform {

/// Why the parser, which works by recursion and takes shared objects apart, must not see this binary list;
/// empty when it may. Checks that every offset and reference lies inside the bytes and every key is a whole
/// text that its dictionary has once, nesting, cycles, and the number of values that come out.
std::string ValidateBinaryPlist(const std::string& bytes);

} // namespace macplatform
