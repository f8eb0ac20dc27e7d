#pragma once

/// Declares a function that detects the system calls of a bundle that change items outside its startup
/// volume.

#include "process/Channel.h"

#include <functional>
#include <string>
#include <vector>

namespace xcodhost {

/// The result of `WatchWrites`.
struct WatchedRun {
    /// Each call that changes an item outside the startup volume, for example `openat "/tmp/x"`.
    std::vector<std::string> calls;
    std::string problem; ///< Why the run was not traced. Empty if the run was traced.
};

/// The code to trace, which runs in a child process. The code calls `watch` when the detection is to begin.
using WatchedBody = std::function<void(const Channel& channel, const std::function<void()>& watch)>;

/// Runs `run` in a child process. Returns the system calls of the child and of its descendants that create,
/// change or remove an item outside `folder` by path or descriptor. Does not prevent these calls. If the
/// child crashes or exits before the end of `run`, ends this process with the status of the child.
WatchedRun WatchWrites(const std::string& folder, const Channel& channel, const WatchedBody& run);

} // namespace xcodhost
