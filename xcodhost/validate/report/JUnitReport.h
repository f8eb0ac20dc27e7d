#pragma once

#include "validate/Validation.h"

#include <string>
#include <vector>

namespace xcodhost {

/// The results in the XML form that build servers read: a suite for each bundle, a case for each check, those
/// that were not run as skipped.
std::string JUnitReport(const std::vector<BundleResult>& bundles);

} // namespace xcodhost
