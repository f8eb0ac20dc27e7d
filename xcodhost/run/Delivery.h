#pragma once

/// Declares a function that loads a bundle and delivers events to it. The function is called in the child
/// process. Also declares which platform calls the child process always reports.

#include "contract/PluginContract.h"
#include "process/Child.h"

#include <string>
#include <vector>

namespace xcodhost {

/// The events of a run and where they are delivered.
struct DeliveryPlan {
    std::string bundle;                 ///< An absolute path.
    std::string volume;                 ///< The directory of the startup volume.
    std::vector<ParameterBlock> blocks; ///< One delivery for each block, in this order.
    bool isDirect = false;   ///< Call the exported PreInstall and PostInstall instead of the main entry.
    bool recordsAll = false; ///< Report every platform call. False: only `IsSynchronisationProblem`.
};

/// Returns whether the call is a CFPreferencesSynchronize that stored nothing, or that could not keep
/// everything in the file.
bool IsSynchronisationProblem(const macplatform::RecordedCall& call);

/// Makes the calls of the installer: creates an instance, queries the interface, calls the main entry once
/// for each block, and releases the instance and the interface. With `isDirect`, calls only the exported
/// functions. Reports each call to the parent process. Returns early if the bundle throws an exception or
/// cannot be loaded. Throws ToolFault if the volume cannot be used.
void Deliver(const DeliveryPlan& plan, const Channel& channel);

} // namespace xcodhost
