#pragma once

/// @file
/// Counts and lists the live objects: objects, Memory Manager blocks, alerts and Apple-event descriptors that
/// were created and not freed. Constant strings and constant UUIDs are never freed and are not counted.

#include <cstddef>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// Returns the number of live objects of all kinds. A test for leaks compares the numbers before and after a
/// call.
std::size_t LiveObjectCount();

/// Returns one line for each live object, in order of creation: the kind, the value in readable notation, and
/// for CoreFoundation objects the number of references.
std::vector<std::string> DescribeLiveObjects();

} // namespace macplatform
#pragma GCC visibility pop
