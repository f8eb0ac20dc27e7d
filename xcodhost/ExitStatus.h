#pragma once

/// How the program ends, and the refusals that end it early.

#include <stdexcept>
#include <string>

namespace xcodhost {

enum class ExitStatus {
    kDone = 0,
    kFailed = 1,    ///< The plug-in set an error bit, or a check failed.
    kUsage = 2,     ///< Wrong usage: nothing was started and nothing written.
    kNotLoaded = 3, ///< The bundle cannot be loaded.
    kCrashed = 4,   ///< The bundle crashed, ended the process or let an exception out.
    kTimeLimit = 5,
    kToolFault = 70, ///< The tool could not do its own work.
};

/// What `main` says on one line of standard error before it ends with `status`.
class Refusal : public std::runtime_error {
public:
    Refusal(ExitStatus refusalStatus, const std::string& text)
        : std::runtime_error(text), status(refusalStatus) {}
    const ExitStatus status;
};

struct UsageError : Refusal {
    explicit UsageError(const std::string& text) : Refusal(ExitStatus::kUsage, text) {}
};

struct ToolFault : Refusal {
    explicit ToolFault(const std::string& text) : Refusal(ExitStatus::kToolFault, text) {}
    /// The action that the system refused, and errno's reason.
    static ToolFault FromErrno(const std::string& action);
};

} // namespace xcodhost
