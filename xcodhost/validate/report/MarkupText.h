#pragma once

#include <string>
#include <string_view>

namespace xcodhost {

/// Returns the text as content or attribute value of XML and HTML: escapes &, <, > and quotes, and replaces
/// unprintable characters as `Printable` does.
std::string MarkupText(std::string_view text);

} // namespace xcodhost
