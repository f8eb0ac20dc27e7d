#pragma once

/// @file
/// Declares the alert responder: the function that answers the alerts of this process.

#include <functional>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// The contents of an alert.
struct Alert {
    /// `kMessage`: an alert of `NSAlert`. `kStop`: an alert of `StopAlert`.
    enum class Kind { kMessage, kStop };
    Kind kind = Kind::kMessage; ///< Determines which of the other members are valid.
    std::string message;        ///< UTF-8. Empty for a stop alert: its text is in a resource.
    /// The titles of the buttons, in the order in which they were added. A message without buttons has the
    /// button "OK". A stop alert has no titles.
    std::vector<std::string> buttons;
    int resource = 0; ///< The resource number of a stop alert.
};

/// Answers an alert: returns the index of the chosen button, from 0. A stop alert has one button. Any other
/// result means that the alert was not shown: `runModal` then returns -1001 (an aborted alert), and StopAlert
/// returns -1. The responder is called on the thread of the alert.
using AlertResponder = std::function<int(const Alert&)>;

/// Replaces the alert responder. An empty function restores the default responder. The default responder
/// shows nothing, chooses the first button of a message, and answers a stop alert with -1.
void SetAlertResponder(AlertResponder responder);

} // namespace macplatform
#pragma GCC visibility pop
