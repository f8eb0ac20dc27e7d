#pragma once

#include "validate/Validation.h"

#include <string>
#include <vector>

namespace xcodhost {

/// One page that needs nothing beside it: the verdict, the checks, the table of products by languages, and
/// what an installation of each product changes on a sample volume. The last is found by runs of its own,
/// for bundles whose events come back.
std::string HtmlPage(const std::vector<BundleResult>& bundles, const ValidationVerdict& verdict);

} // namespace xcodhost
