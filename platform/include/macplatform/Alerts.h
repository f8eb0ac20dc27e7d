#pragma once

/// @file
/// Sets the alert responder: the function that answers the alerts of this process.

#include <functional>
#include <string>
#include <vector>

#pragma GCC visibility push(default)
namespace macplatform {

/// The contents of an alert.
struct Alert {
    /// `kMessage` is an alert of `NSAlert`, `kStop` an alert of `StopAlert`.
    enum class Kind { kMessage, kStop };
    Kind kind = Kind::kMessage; ///< Determines which of the other members are valid.
    std::string message;        ///< UTF-8; empty for a stop alert, whose text is in a resource.
    /// The titles of the buttons in the order of their addition. A message without buttons gets the button
    /// "OK".
    std::vector<std::string> buttons;
    int resource = 0; ///< The resource number of a stop alert.
};

/// Answers an alert with the index of the chosen button, from 0. Any other result means that the alert was
/// not shown. `runModal` then returns -1001, the value for an aborted alert, and StopAlert returns -1.
using AlertResponder = std::function<int(const Alert&)>;

/// Replaces the alert responder. An empty function restores the default responder. The default responder
/// shows nothing, chooses the first button of a message, and answers a stop alert with -1.
void SetAlertResponder(AlertResponder responder);

} // namespace macplatform
#pragma GCC visibility pop
