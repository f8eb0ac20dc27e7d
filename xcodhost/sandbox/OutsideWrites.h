#pragma once

#include "process/Channel.h"

#include <functional>
#include <string>
#include <vector>

namespace xcodhost {

struct WatchedRun {
    std::vector<std::string> calls; ///< `openat "/tmp/x"`: each that would have changed something outside.
    std::string problem;            ///< Why nothing could be watched; empty when it was.
};

/// What is watched: `run` is called in a child of this process and calls `watch` where the watching begins.
using WatchedBody = std::function<void(const Channel& channel, const std::function<void()>& watch)>;

/// Stops at every system call of the child, and of whatever it starts, that makes, changes or removes
/// something by its path or descriptor, and tells those that fall outside of the folder. The calls are
/// carried out all the same. Dies as the child does when that crashes or exits early.
WatchedRun WatchWrites(const std::string& folder, const Channel& channel, const WatchedBody& run);

} // namespace xcodhost
