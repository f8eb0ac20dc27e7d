#pragma once

#include "validate/Validation.h"

#include <string>
#include <vector>

namespace xcodhost {

/// Returns the results as JUnit XML, which build servers read: a test suite for each bundle and a test case
/// for each check.
std::string JUnitReport(const std::vector<BundleResult>& bundles);

} // namespace xcodhost
