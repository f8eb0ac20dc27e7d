#pragma once

/// Who answers the bundle's alerts.

#include "DesktopAlert.h"

#include <macplatform/Alerts.h>

#include <cstddef>
#include <string>
#include <vector>

namespace xcodhost {

class Interruption;

struct AnswerPolicy {
    enum class Kind {
        kAsk,     ///< A person, on standard input; the questions go to standard error.
        kDesktop, ///< A person, in a window of the desktop.
        kFirst,   ///< The first button.
        kTitles,  ///< The buttons of these titles, one for each alert in order.
    };
    Kind kind = Kind::kFirst;
    std::vector<std::string> titles;
    std::vector<DialogProgram> programs; ///< What shows the window; at least one for kDesktop.
};

struct Answer {
    int button = -1;  ///< -1: the alert counts as not shown.
    std::string note; ///< Why it was not shown; empty for a person's or the policy's choice.
};

class AlertResponder {
public:
    AlertResponder(AnswerPolicy answerPolicy, const Interruption& pendingSignals);

    /// Stop alerts, whose text and buttons lie in a resource that is not here, are shown to a person only.
    Answer Respond(const macplatform::Alert& alert);

private:
    Answer Ask(const macplatform::Alert& alert);
    Answer NextTitle(const macplatform::Alert& alert);
    bool ReadLine(std::string& line);

    AnswerPolicy policy;
    const Interruption& interruption;
    std::size_t nextTitle = 0;
    std::string typedAhead; ///< Read from standard input and not used yet.
};

/// "Alert "message"" or "Stop alert 5000".
std::string Describe(const macplatform::Alert& alert);

} // namespace xcodhost
