#pragma once

#include "validate/Validation.h"

#include <string>
#include <vector>

namespace xcodhost {

/// Returns an HTML page without external files: the verdict, the checks, the table of products and languages,
/// and the changes that an installation of each product made.
std::string HtmlPage(const std::vector<BundleResult>& bundles, const ValidationVerdict& verdict);

} // namespace xcodhost
