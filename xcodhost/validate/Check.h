#pragma once

/// One thing that holds for every plug-in that the installer can work with.

#include "ExitStatus.h"

#include <string>
#include <vector>

namespace xcodhost {

class CheckRun;

struct Check {
    const char* id;       ///< Stable: "group.name".
    const char* sentence; ///< What holds.
    const char* why;      ///< What goes wrong where it does not, and where to look.
    /// Checks without which this one means nothing: it is not run after one of them has failed.
    std::vector<const char*> dependencies;
    /// Runs in a child process of its own and tells what does not hold.
    void (*body)(CheckRun&);
    /// How the tool ends when this is the first check that failed, for other reasons than a crash or a hang.
    ExitStatus failure = ExitStatus::kFailed;
};

/// All checks in the order in which they are shown.
const std::vector<Check>& AllChecks();

/// The checks whose ids match one of the shell patterns; a group's name stands for its checks. Throws
/// UsageError for a pattern that matches nothing; without a pattern, all of them.
std::vector<const Check*> MatchingChecks(const std::vector<std::string>& patterns);

} // namespace xcodhost
