#pragma once

#include <string>

namespace macplatform {

/// The same list in binary form, which the parser reads without guessing. Empty, with `error` as one line,
/// when the text is no well-formed XML property list in UTF-8, declares entities, is nested too deeply, or
/// holds too many values.
std::string BinaryPlistFromXml(const std::string& xml, std::string& error);

} // namespace macplatform
