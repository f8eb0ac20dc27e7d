#pragma once

/// The report of `xcodhost validate` as text and as JSON, and the parts that the other reports share.

#include "Console.h"
#include "validate/Validation.h"

#include <string>
#include <vector>

namespace xcodhost {

/// Returns the report for a person. The last line is the verdict on all bundles.
std::string ValidateReport(const std::vector<BundleResult>& bundles, const ValidationVerdict& verdict,
                           const Style& style);

/// Returns the report as one JSON document. docs/xcodhost.md describes its keys.
std::string ValidateReportJson(const std::vector<BundleResult>& bundles, const ValidationVerdict& verdict);

/// Returns the lines of a failed check: call, expected and seen of each finding, and the bundle's output.
std::vector<std::string> FindingLines(const CheckResult& result);

/// Returns the shell command that runs only this check.
std::string RepeatCommand(const std::string& bundle, const CheckResult& result);

/// Returns "passed", "failed" or "not run".
const char* StateName(CheckResult::State state);

} // namespace xcodhost
