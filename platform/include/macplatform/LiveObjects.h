#pragma once

/// @file
/// What was made and not freed: objects, Memory Manager blocks, alerts, Apple-event descriptors.
/// Constant strings and constant UUIDs are never freed and do not count.

#include <cstddef>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

std::size_t LiveObjectCount(); ///< Of all kinds together; compare it before and after.

/// One line each, in the order of their making: kind, value as a person would write it, references.
std::vector<std::string> DescribeLiveObjects();

} // namespace macplatform
#pragma GCC visibility pop
