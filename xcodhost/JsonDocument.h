#pragma once

/// JSON as every command prints it.

#include "ExitStatus.h"
#include "volume/FinderFlagNames.h"

#include <macplatform/PropertyList.h>

#include <nlohmann/json.hpp>

#include <string>

namespace xcodhost {

using Json = nlohmann::ordered_json;

/// Indented, one line feed at the end; bytes that are no UTF-8 become U+FFFD.
std::string DumpDocument(const Json& document);

/// `{"error": {"kind", "message"}, "exitStatus"}`
std::string ErrorDocument(ExitStatus status, const std::string& message);

/// `{"type", "value"}`: the value as JSON where it has one (integers, texts, booleans, arrays, dictionaries),
/// else the text that a person would write.
Json ValueJson(const macplatform::PropertyValue& value);

/// `{"letter", "name", "mask"}`
Json FlagJson(const FinderFlagName& flag);

} // namespace xcodhost
