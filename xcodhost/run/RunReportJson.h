#pragma once

#include "RunResult.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace xcodhost {

/// The result as one JSON document; docs/xcodhost.md describes its keys.
std::string RunReportJson(const RunResult& result, const Verdict& verdict);

} // namespace xcodhost
