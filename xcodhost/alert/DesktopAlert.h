#pragma once

/// Declares functions that show alerts in a window of the desktop with an installed dialog program.

#include <string>
#include <vector>

namespace xcodhost {

class Interruption;
struct AlertAnswer;

/// An installed dialog program.
struct DialogProgram {
    enum class Kind { kYad, kZenity, kKdialog };
    Kind kind;
    std::string path;
};

/// Returns the dialog programs in the absolute directories of PATH, the preferred program first. Throws
/// UsageError if there is no such program or no display.
std::vector<DialogProgram> FindDialogPrograms();

/// Shows the message and the buttons, and returns the answer. Runs the programs in order until one of them
/// has shown the window. yad and zenity show a row of buttons. kdialog shows a list. Markup in the message is
/// shown literally, and control characters are shown as `\xNN`. A message of more than 24 lines is shortened
/// and ends with `[...]`. The button of the answer is -1 if the user closes the window without a choice, or
/// if no program can show the window. Throws Interrupted and ToolFault.
AlertAnswer ShowOnDesktop(const std::vector<DialogProgram>& programs, const std::string& message,
                          const std::vector<std::string>& buttons, const Interruption& interruption);

} // namespace xcodhost
