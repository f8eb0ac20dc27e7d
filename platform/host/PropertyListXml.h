#pragma once

#include <string>

namespace macplatform {

/// The same list in the one form that the parser reads without guessing: elements and escaped texts alone,
/// numbers and data in canonical form. Empty, with `error` as one line, when the text is no well-formed XML
/// property list in UTF-8, declares entities, is nested too deeply, or holds too many values.
std::string CanonicalXml(const std::string& xml, std::string& error);

} // namespace macplatform
