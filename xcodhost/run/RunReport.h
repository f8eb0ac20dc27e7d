#pragma once

/// Declares functions that format the result of a run as text.

#include "Console.h"
#include "RunResult.h"

#include <string>

namespace xcodhost {

/// Returns the report of a run. The last line is the verdict.
std::string RunReport(const RunResult& result, const Verdict& verdict, const Style& style);

/// Returns the change as one line without a line feed.
std::string Line(const PreferenceChange& change);
std::string Line(const FinderFlagChange& change);

} // namespace xcodhost
