#pragma once

/// Loading a bundle and delivering events to it. Runs in the child process.

#include "contract/PluginContract.h"
#include "process/Child.h"

#include <string>
#include <vector>

namespace xcodhost {

struct DeliveryPlan {
    std::string bundle; ///< Absolute.
    std::string volume; ///< The folder that stands for the startup volume.
    std::vector<ParameterBlock> blocks;
    bool isDirect = false; ///< Call the exported PreInstall and PostInstall, not the interface's main entry.
    bool recordsAll =
        false; ///< Tell every platform call; otherwise only those that failed without being seen.
};

/// Does as the installer does: factory, interface, one call of the main entry for each block, release. Stops
/// at the first escaped exception and where the bundle gives no instance or interface.
void Deliver(const DeliveryPlan& plan, const Channel& channel);

} // namespace xcodhost
