#pragma once

/// The exit statuses of the tool, and the exceptions that end the tool with one of them.

#include <stdexcept>
#include <string>

namespace xcodhost {

enum class ExitStatus {
    kDone = 0,
    kFailed = 1,     ///< The plug-in set an error bit, or a check failed.
    kUsage = 2,      ///< Wrong usage. No code of a bundle ran, and no volume was changed.
    kNotLoaded = 3,  ///< The bundle cannot be loaded.
    kCrashed = 4,    ///< The bundle crashed, ended the process or let an exception out.
    kTimeLimit = 5,  ///< A call or the run exceeded its time limit.
    kToolFault = 70, ///< The tool could not do its own work.
};

/// An error that ends the tool. `main` reports the text on one line of standard error and ends with `status`.
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
    /// Returns a fault with the text "ACTION: REASON". The reason is the description of `errno`.
    static ToolFault FromErrno(const std::string& action);
};

} // namespace xcodhost
