#pragma once

/// The checks by group, in the order of their needs.

#include "validate/Check.h"

namespace xcodhost {

std::vector<Check> BundleChecks();      ///< The property list and the executable.
std::vector<Check> FactoryChecks();     ///< The factory function and the function block.
std::vector<Check> InterfaceChecks();   ///< QueryInterface.
std::vector<Check> ReferenceChecks();   ///< AddRef and Release.
std::vector<Check> DispatchChecks();    ///< The main entry.
std::vector<Check> BlockChecks();       ///< What becomes of the parameter block.
std::vector<Check> StepChecks();        ///< The two exported steps.
std::vector<Check> PreInstallChecks();  ///< Effects of the pre-install event.
std::vector<Check> PostInstallChecks(); ///< Preferences that the post-install event stores.
std::vector<Check> StatusFileChecks();  ///< The updater's status file.
std::vector<Check> FinderChecks();      ///< Finder flags.
std::vector<Check> FaultChecks();       ///< Calls of the platform that fail.
std::vector<Check> ProcessChecks();     ///< What a bundle must leave alone in its host.

} // namespace xcodhost
