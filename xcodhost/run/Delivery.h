#pragma once

/// Loads a bundle and delivers events to it. Runs in the child process.

#include "contract/PluginContract.h"
#include "process/Child.h"

#include <string>
#include <vector>

namespace xcodhost {

/// The events of a run and where they are delivered.
struct DeliveryPlan {
    std::string bundle;                 ///< An absolute path.
    std::string volume;                 ///< The directory that stands for the startup volume.
    std::vector<ParameterBlock> blocks; ///< One delivery for each block, in this order.
    bool isDirect = false;   ///< Call the exported PreInstall and PostInstall instead of the main entry.
    bool recordsAll = false; ///< Report every platform call. False: only failed synchronisations.
};

/// Makes the calls of the installer: creates an instance, gets the interface, calls the main entry once for
/// each block, and releases both. Reports each call to the parent process. Stops after an exception of the
/// bundle, and if there is no instance or interface. Throws ToolFault if the volume cannot be used.
void Deliver(const DeliveryPlan& plan, const Channel& channel);

} // namespace xcodhost
