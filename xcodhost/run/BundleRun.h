#pragma once

/// Declares a run: a bundle gets events in a child process, and its effects on a volume are recorded.

#include "RunResult.h"
#include "alert/AlertResponder.h"
#include "contract/PluginContract.h"

#include <string>
#include <vector>

namespace xcodhost {

/// What a run delivers, and where.
struct RunPlan {
    std::string bundle;
    std::vector<ParameterBlock> blocks; ///< One delivery for each block, in this order.
    bool isDirect = false;              ///< Call PreInstall and PostInstall, not the main entry.
    std::string volume;                 ///< Empty: a temporary sample volume.
    bool isDryRun = false;
    AlertPolicy answers;
    bool hasTrace = false;
    double secondsPerCall = 10;
};

/// Delivers the blocks in a child process. Returns the calls and the changes on the volume. Throws UsageError
/// before it starts the child process. Throws ToolFault and Interrupted.
RunResult RunBundle(const RunPlan& plan);

} // namespace xcodhost
