#pragma once

/// Declares the validation of a bundle. The validation runs each check in its own child process and collects
/// the results.

#include "Check.h"
#include "ExitStatus.h"
#include "contract/ProductContract.h"
#include "process/Child.h"
#include "process/Messages.h"
#include "volume/Changes.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace xcodhost {

/// A finding, with the last call of the bundle before it.
struct LocatedFinding {
    std::string call; ///< Empty if there was no call.
    std::string expected;
    std::string seen;
};

/// The result of one check.
struct CheckResult {
    enum class State { kPassed, kFailed, kNotRun };

    const Check* check = nullptr;
    State state = State::kNotRun;
    std::vector<LocatedFinding> findings;  ///< The first 20 findings.
    std::size_t moreFindings = 0;          ///< The number of further findings.
    std::vector<CheckStep> trace;          ///< In order. Empty unless the plan traces the checks.
    std::string reason;                    ///< Why the check was not run.
    ExitStatus status = ExitStatus::kDone; ///< The exit status for this result alone.
    std::string output;                    ///< The first 2000 bytes that the bundle printed.
    double seconds = 0;
};

/// The changes that an installation of a product in French made on a sample volume.
struct Installation {
    ProductContract product;
    Changes changes;
};

/// The results of all checks of a bundle.
struct BundleResult {
    std::string bundle; ///< The path as the user gave it.
    std::vector<CheckResult> checks;
    std::vector<TableCell> table;            ///< The languages that post-install stored.
    std::vector<Installation> installations; ///< One for each product. `Validate` leaves it empty.

    std::size_t Count(CheckResult::State state) const;
    const CheckResult* FirstFailure() const; ///< Null if no check failed.
};

/// The verdict on one or more bundles. The text is "PASS n checks" or "FAIL n of m (first: ID)". m is the
/// number of checks that passed or failed. The exit status is the status of the first failure. If no check
/// passed or failed, the verdict is a failure.
struct ValidationVerdict {
    ExitStatus status = ExitStatus::kDone;
    std::string text;
};
/// Returns the verdict on the bundles.
ValidationVerdict VerdictOf(const BundleResult* bundles, std::size_t count);

/// The checks to run on a bundle.
struct ValidationPlan {
    std::string bundle;
    std::vector<const Check*> checks;
    double secondsPerCall = 10;
    bool isTraced = false;
    unsigned atOnce = 1; ///< The number of checks that run at the same time.
};

/// Runs the checks of the plan. Calls `onProgress` with the number of finished checks each time that this
/// number may have changed. Throws ToolFault if the tool itself fails, and Interrupted after a signal.
BundleResult Validate(const ValidationPlan& plan, const Interruption& interruption,
                      const std::function<void(std::size_t)>& onProgress);

} // namespace xcodhost
