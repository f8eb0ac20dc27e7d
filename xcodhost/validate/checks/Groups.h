#pragma once

/// The groups of checks. Each function returns the checks of its group.

#include "validate/Check.h"

namespace xcodhost {

std::vector<Check> BundleChecks();      ///< The property list and the executable.
std::vector<Check> FactoryChecks();     ///< The factory function and the function block.
std::vector<Check> InterfaceChecks();   ///< QueryInterface.
std::vector<Check> ReferenceChecks();   ///< AddRef and Release.
std::vector<Check> DispatchChecks();    ///< The main entry.
std::vector<Check> BlockChecks();       ///< The parameter block after a call.
std::vector<Check> StepChecks();        ///< The two exported steps.
std::vector<Check> PreInstallChecks();  ///< Effects of the pre-install event.
std::vector<Check> PostInstallChecks(); ///< Preferences that the post-install event stores.
std::vector<Check> StatusFileChecks();  ///< The updater's status file.
std::vector<Check> FinderChecks();      ///< Finder flags.
std::vector<Check> FaultChecks();       ///< Failed platform calls.
std::vector<Check> ProcessChecks();     ///< The state of the host's process.

} // namespace xcodhost
