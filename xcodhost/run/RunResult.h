#pragma once

/// Declares the result of a run, from which the reports are generated.

#include "ExitStatus.h"
#include "process/Child.h"
#include "process/Messages.h"
#include "volume/Changes.h"

#include <optional>
#include <string>
#include <vector>

namespace xcodhost {

/// An alert and its answer.
struct AlertRecord {
    macplatform::Alert alert;
    int button = -1;  ///< The index of the chosen button. -1: not shown.
    std::string note; ///< Why the alert was not shown.

    /// Returns the title of the chosen button. Returns an empty string if the alert was not shown.
    std::string Title() const;
};

/// A call of CFPreferencesSynchronize that stored nothing, or that could not keep everything in the file.
struct SynchronisationProblem {
    std::string domain;
    std::string reason;    ///< Empty if the platform gave no reason.
    bool isStored = false; ///< The values were stored, but the file lost what the reason says.
};

/// One call of the bundle, with the alerts and platform calls during the call.
struct CallRecord {
    CallBegan call;
    std::optional<CallReturned> returned; ///< No value: the call did not return.
    std::vector<AlertRecord> alerts;
    std::vector<macplatform::RecordedCall> platformCalls; ///< Filled only for `--trace`.
    std::vector<SynchronisationProblem> synchronisationProblems;

    /// Returns the function and its arguments: "XCodMain(selector 1000, ...)".
    std::string Describe() const;
    /// Returns the bits that the call has set in the error flags.
    std::uint32_t NewErrorBits() const;
};

/// The calls of a run, how the child process ended, and the changes on the volume.
struct RunResult {
    std::string bundle; ///< As given on the command line.
    std::string volume; ///< As given on the command line. Empty: a temporary sample volume.
    bool isDryRun = false;
    bool hasTrace = false;

    std::vector<CallRecord> calls;
    std::optional<LoadFailed> loadFailure;
    std::optional<ExceptionEscaped> exception; ///< The exception that left the last call.
    std::vector<std::string> objectsLeft;
    ChildEnd end;

    Changes changes;
    std::vector<std::string> problems; ///< One line for each item or domain that could not be read or stored.
};

/// The exit status and the last line of the report.
struct Verdict {
    ExitStatus status = ExitStatus::kDone;
    std::string text; ///< "DONE 5 changes", "FAIL ..."
};

/// Returns the verdict on a run.
Verdict VerdictOf(const RunResult& result);

/// Returns the name and the description of a signal: "SIGSEGV (Segmentation fault)".
std::string SignalName(int number);

} // namespace xcodhost
