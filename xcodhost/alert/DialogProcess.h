#pragma once

/// A dialog program of the desktop, run until the person has answered.

#include <string>
#include <utility>
#include <vector>

namespace xcodhost {

class Interruption;

struct DialogEnd {
    int status = 0;        ///< As waitpid gives it.
    std::string output;    ///< What it wrote to standard output, 64 KiB at most.
    std::string lastError; ///< The last line that it wrote to standard error.
};

/// Runs `command`, a program's path and its arguments, without a shell, with these variables added to the
/// environment. Takes as long as the person does. Before it throws (ToolFault, or Interrupted when a signal
/// came) the program is ended, with all that it started.
DialogEnd RunDialog(const std::vector<std::string>& command,
                    const std::vector<std::pair<const char*, const char*>>& environment,
                    const Interruption& interruption);

} // namespace xcodhost
