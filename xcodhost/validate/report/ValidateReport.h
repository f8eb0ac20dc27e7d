#pragma once

#include "Console.h"
#include "validate/Validation.h"

#include <string>
#include <vector>

namespace xcodhost {

/// What a person reads; the last line is the verdict over all bundles.
std::string ValidateReport(const std::vector<BundleResult>& bundles, const ValidationVerdict& verdict,
                           const Style& style);

/// One JSON document; docs/xcodhost.md describes its keys.
std::string ValidateReportJson(const std::vector<BundleResult>& bundles, const ValidationVerdict& verdict);

/// What a failed check says, line by line: call, expected, seen.
std::vector<std::string> FindingLines(const CheckResult& result);

/// The command that runs one check alone, fit for a shell.
std::string RepeatCommand(const std::string& bundle, const CheckResult& result);

/// "passed", "failed", "not run"
const char* StateName(CheckResult::State state);

/// Of one bundle alone.
ValidationVerdict Judge(const BundleResult& bundle);

} // namespace xcodhost
