#pragma once

/// Property lists as bytes, as the parser's own trees, and as values.

#include <macplatform/PropertyList.h>

#include <plist/plist.h>

#include <memory>
#include <string>

namespace macplatform {

struct FreeTree {
    void operator()(void* tree) const { plist_free(tree); }
};
using PropertyListTree = std::unique_ptr<void, FreeTree>;

PropertyListFormat FormatOf(const std::string& bytes);

/// The list in binary form, which ParseBinaryPlist may see; empty when the bytes are no property list or a
/// dangerous one, and then `error` tells why, as one line.
std::string ToBinaryPlist(const std::string& bytes, std::string& error);

/// Null, with `error` as one line, when the parser refuses the list.
PropertyListTree ParseBinaryPlist(const std::string& plist, std::string& error);

/// Both at once.
PropertyListTree ParsePropertyList(const std::string& bytes, std::string& error);

/// A list from ToBinaryPlist as XML; empty when it cannot be written.
std::string ToXmlPlist(const std::string& plist);

/// A copy in our own terms.
PropertyValue ValueOf(plist_t node);

} // namespace macplatform
