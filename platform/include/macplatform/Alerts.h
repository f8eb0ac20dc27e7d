#pragma once

/// @file
/// Who answers the alerts.

#include <functional>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// What is to be asked.
struct Alert {
    /// `NSAlert`'s, or that of `StopAlert`.
    enum class Kind { kMessage, kStop };
    Kind kind = Kind::kMessage; ///< Says which of the other members mean something.
    std::string message;        ///< UTF-8; empty for a stop alert, whose text lies in a resource.
    std::vector<std::string>
        buttons;      ///< In the order in which they were added; the platform's one "OK" when none was.
    int resource = 0; ///< The number of a stop alert.
};

/// The answer is the place of the chosen button, from 0. Any other means that the alert could not be shown:
/// `runModal` then answers -1001, as for an alert that was aborted, and StopAlert -1.
using AlertResponder = std::function<int(const Alert&)>;

/// Replaces the presenter; an empty one restores the first one, which shows nothing and chooses the first
/// button of a message, and answers -1 for a stop alert.
void SetAlertResponder(AlertResponder responder);

} // namespace macplatform
#pragma GCC visibility pop
