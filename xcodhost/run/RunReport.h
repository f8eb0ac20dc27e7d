#pragma once

#include "Console.h"
#include "RunResult.h"

#include <string>

namespace xcodhost {

/// The result as a person reads it; the last line is the verdict.
std::string RunReport(const RunResult& result, const Verdict& verdict, const Style& style);

/// One line each, as `run` and `show` print them.
std::string Line(const PreferenceChange& change);
std::string Line(const FinderFlagChange& change);

} // namespace xcodhost
