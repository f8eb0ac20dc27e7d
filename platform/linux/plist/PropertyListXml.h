#pragma once

#include <string>

namespace macplatform {

/// Converts an XML property list to a binary one, which the parser reads in only one way. Returns an empty
/// string, with one line in `error`, if the text is not a well-formed XML property list in UTF-8, declares
/// entities, or exceeds a limit of PropertyListLimits.h.
std::string BinaryPlistFromXml(const std::string& xml, std::string& error);

} // namespace macplatform
