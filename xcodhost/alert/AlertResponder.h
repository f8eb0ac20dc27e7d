#pragma once

/// Declares the alert responder of the tool. The user chooses the buttons, or the command line specifies them
/// in advance.

#include "DesktopAlert.h"

#include <macplatform/Alerts.h>

#include <cstddef>
#include <string>
#include <vector>

namespace xcodhost {

class Interruption;

/// How the buttons of alerts are chosen.
struct AlertPolicy {
    enum class Kind {
        kAsk,     ///< The user chooses on standard input. The question goes to standard error.
        kDesktop, ///< The user chooses in a window of the desktop.
        kFirst,   ///< The first button is chosen.
        kTitles,  ///< Each message uses the next element of `titles`.
    };
    Kind kind = Kind::kFirst;
    std::vector<std::string> titles;
    std::vector<DialogProgram> programs; ///< Programs that can show a window. Not empty for kDesktop.
};

/// The answer to one alert.
struct AlertAnswer {
    int button = -1;  ///< The index of the chosen button. -1: the alert was not shown.
    std::string note; ///< Why the alert was not shown. Empty if a button was chosen.
};

/// Answers the alerts of one run in order.
class AlertResponder {
public:
    AlertResponder(AlertPolicy alertPolicy, const Interruption& pendingSignals);

    /// Returns the answer to an alert. The text and the buttons of a stop alert are in a resource of the
    /// installer, which the tool does not have. With kFirst and kTitles a stop alert is therefore not shown,
    /// and uses no title. Throws Interrupted and ToolFault.
    AlertAnswer Respond(const macplatform::Alert& alert);

private:
    AlertAnswer Ask(const macplatform::Alert& alert);
    AlertAnswer NextTitle(const macplatform::Alert& alert);
    bool ReadLine(std::string& line);

    AlertPolicy policy;
    const Interruption& interruption;
    std::size_t nextTitle = 0;
    std::string bufferedInput; ///< Input after the last line that was used.
};

/// Returns `Alert "MESSAGE"` or `Stop alert NUMBER`.
std::string Describe(const macplatform::Alert& alert);

} // namespace xcodhost
