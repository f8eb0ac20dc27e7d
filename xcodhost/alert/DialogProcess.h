#pragma once

/// Declares a function that runs a dialog program of the desktop and waits for its end.

#include <string>
#include <utility>
#include <vector>

namespace xcodhost {

class Interruption;

/// The status and the output of a dialog program that has ended.
struct DialogResult {
    int status = 0;        ///< The status that waitpid returns.
    std::string output;    ///< The first 64 KiB of the program's standard output.
    std::string lastError; ///< The last line in the first 64 KiB of standard error.
};

/// Runs a program without a shell and waits for its end without a time limit. `command` contains the path of
/// the program and its arguments. The environment of the program is the environment of the tool and
/// `environment`. Throws ToolFault. Throws Interrupted if a signal arrives. Kills every process of the
/// program's process group before it returns or throws.
DialogResult RunDialog(const std::vector<std::string>& command,
                       const std::vector<std::pair<const char*, const char*>>& environment,
                       const Interruption& interruption);

} // namespace xcodhost
