#pragma once

#include <string>
#include <string_view>

namespace xcodhost {

/// A text as XML or HTML content or attribute value: printable, with the markup's own characters escaped.
std::string MarkupText(std::string_view text);

} // namespace xcodhost
