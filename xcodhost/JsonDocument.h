#pragma once

/// The JSON documents that the commands print, and the JSON objects that several commands share.

#include "ExitStatus.h"
#include "volume/FinderFlagNames.h"

#include <macplatform/PropertyList.h>

#include <nlohmann/json.hpp>

#include <string>

namespace xcodhost {

using Json = nlohmann::ordered_json;

/// Returns the document as indented text with a line feed at the end. U+FFFD replaces bytes that are not
/// valid UTF-8.
std::string DumpDocument(const Json& document);

/// Returns the document `{"error": {"kind", "message"}, "exitStatus"}` of a run that ended with an error.
std::string ErrorDocument(ExitStatus status, const std::string& message);

/// Returns `{"type", "value"}`. Integers, strings and booleans become JSON values. Arrays, sets and
/// dictionaries contain such objects. Every other type becomes a string. A lone surrogate in a string becomes
/// `\uXXXX`.
Json ValueJson(const macplatform::PropertyValue& value);

/// Returns `{"letter", "name", "mask"}`.
Json FlagJson(const FinderFlagName& flag);

} // namespace xcodhost
