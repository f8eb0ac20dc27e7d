#pragma once

/// Property lists as the parser's own trees, which keep all that a file can hold.

#include <macplatform/PropertyList.h>

#include <plist/plist.h>

#include <memory>
#include <string>

namespace macplatform {

struct FreeTree {
    void operator()(void* tree) const { plist_free(tree); }
};
using PropertyListTree = std::unique_ptr<void, FreeTree>;

/// The tree of these bytes; null when they are no property list or a dangerous one, and then `error` tells
/// why, as one line.
PropertyListTree ParsePropertyList(const std::string& bytes, std::string& error);

PropertyListFormat FormatOf(const std::string& bytes);

/// The bytes of a tree; empty when it cannot be written.
std::string WritePropertyList(plist_t tree, PropertyListFormat format);

/// A copy in our own terms.
PropertyValue ValueOf(plist_t node);

} // namespace macplatform
