#pragma once

/// A bundle looked at by checks, each in a child process of its own.

#include "Check.h"
#include "ExitStatus.h"
#include "process/Child.h"
#include "process/Messages.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace xcodhost {

/// A finding with the call into the bundle that was made last.
struct LocatedFinding {
    std::string call; ///< Empty: none was made.
    std::string expected;
    std::string seen;
};

struct CheckResult {
    enum class State { kPassed, kFailed, kNotRun };

    const Check* check = nullptr;
    State state = State::kNotRun;
    std::vector<LocatedFinding> findings; ///< The first ones.
    std::size_t moreFindings = 0;
    std::string reason;                    ///< Why it was not run.
    ExitStatus status = ExitStatus::kDone; ///< How the tool ends for this result alone.
    std::string output;                    ///< The first of what the bundle printed meanwhile.
    double seconds = 0;
};

struct BundleResult {
    std::string bundle; ///< As it was named.
    std::vector<CheckResult> checks;
    std::vector<TableCell> table; ///< Languages that post-install stored, by product and language.

    std::size_t Count(CheckResult::State state) const;
    const CheckResult* FirstFailure() const; ///< Null when there is none.
};

/// What the verdict says of one or more bundles: "PASS n checks", or "FAIL n of m (first: ID)" of those that
/// were run. The exit status is that of the first failure. No check at all is a failure.
struct ValidationVerdict {
    ExitStatus status = ExitStatus::kDone;
    std::string text;
};
ValidationVerdict Judge(const std::vector<const BundleResult*>& bundles);

struct ValidationPlan {
    std::string bundle;
    std::vector<const Check*> checks;
    double secondsPerCall = 10;
    unsigned atOnce = 1;
};

/// `onProgress` is told how many checks are done. Throws ToolFault and Interrupted.
BundleResult Validate(const ValidationPlan& plan, const Interruption& interruption,
                      const std::function<void(std::size_t)>& onProgress);

} // namespace xcodhost
