#pragma once

#include "RunResult.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace xcodhost {

/// Returns the result of a run as one JSON document. docs/xcodhost.md describes its keys.
std::string RunReportJson(const RunResult& result, const Verdict& verdict);

} // namespace xcodhost
