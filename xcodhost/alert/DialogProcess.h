#pragma once

/// Runs a dialog program of the desktop until the user has answered.

#include <string>
#include <utility>
#include <vector>

namespace xcodhost {

class Interruption;

/// The end of a dialog program.
struct DialogEnd {
    int status = 0;        ///< The status that waitpid returns.
    std::string output;    ///< The first 64 KiB of the program's standard output.
    std::string lastError; ///< The last line of the first 64 KiB of its standard error.
};

/// Runs a program without a shell and waits for its end, without a time limit. `command` is the path of the
/// program and its arguments. `environment` is added to the environment of the tool. Throws ToolFault, and
/// Interrupted if a signal arrives. Before the function returns or throws, it kills every process of the
/// program's process group.
DialogEnd RunDialog(const std::vector<std::string>& command,
                    const std::vector<std::pair<const char*, const char*>>& environment,
                    const Interruption& interruption);

} // namespace xcodhost
