#pragma once

/// @file
/// Converts property lists between their bytes (XML or binary), the trees of the parser (libplist) and
/// `PropertyValue`. An error message is one line without a path.

#include <macplatform/PropertyList.h>

#include <plist/plist.h>

#include <memory>
#include <string>

namespace macplatform {

struct FreeTree {
    void operator()(void* tree) const { plist_free(tree); }
};
using PropertyListTree = std::unique_ptr<void, FreeTree>;

/// Returns the format that the first bytes have. All bytes that are not binary count as XML.
PropertyListFormat FormatOf(const std::string& bytes);

/// Returns a validated binary property list with the contents of the bytes. Returns an empty string, with
/// `error` set, if the bytes are not a property list or exceed a limit.
std::string ToBinaryPlist(const std::string& bytes, std::string& error);

/// Parses a binary property list that `ToBinaryPlist` returned. Returns null, with `error` set, if the parser
/// rejects the property list.
PropertyListTree ParseBinaryPlist(const std::string& plist, std::string& error);

/// Parses a property list in either format. Returns null, with `error` set, if `ToBinaryPlist` or the parser
/// rejects the bytes.
PropertyListTree ParsePropertyList(const std::string& bytes, std::string& error);

/// Converts a binary property list that `ToBinaryPlist` returned to XML.
/// Returns an empty string if the conversion fails.
std::string ToXmlPlist(const std::string& plist);

/// Returns a copy of a node and all of its members.
PropertyValue ValueOf(plist_t node);

} // namespace macplatform
