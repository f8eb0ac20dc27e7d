#pragma once

/// Alerts in a window of the desktop, shown by the desktop's own dialog programs.

#include <string>
#include <vector>

namespace xcodhost {

class Interruption;
struct Answer;

struct DialogProgram {
    enum class Kind { kYad, kZenity, kKdialog };
    Kind kind;
    std::string path;
};

/// The installed programs, the most capable first. Throws UsageError when PATH has none, or when there is no
/// display.
std::vector<DialogProgram> FindDialogPrograms();

/// Shows the message and the buttons from left to right, or as a list from top to bottom where the program
/// has no row for so many. A program that cannot show them leaves it to the next one. All texts are shown
/// letter by letter, control characters as `\xNN`; a message beyond a screen's height is cut with a sign of
/// it. A window that is closed without a choice is an alert that was not shown. Throws Interrupted.
Answer ShowOnDesktop(const std::vector<DialogProgram>& programs, const std::string& message,
                     const std::vector<std::string>& buttons, const Interruption& interruption);

} // namespace xcodhost
