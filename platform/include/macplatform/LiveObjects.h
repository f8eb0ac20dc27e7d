#pragma once

/// @file
/// Declares functions that count and list the live objects of the platform: CoreFoundation objects, Memory
/// Manager blocks, alerts and Apple-event descriptors that were created and not freed. Constant strings and
/// constant UUIDs are never freed and are not counted.

#include <cstddef>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// Returns the number of live objects of all kinds. A test for leaks compares this number before and after a
/// call.
std::size_t LiveObjectCount();

/// Returns one line for each live object, in the order of creation. A line has the kind of the object, its
/// value in readable notation and, for a CoreFoundation object, the number of references.
std::vector<std::string> DescribeLiveObjects();

} // namespace macplatform
#pragma GCC visibility pop
