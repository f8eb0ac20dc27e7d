#pragma once

/// The groups of checks, and the checks that checks of other groups depend on. A new check is a function and
/// an entry in its group.

#include "validate/Check.h"

namespace xcodhost {

extern const CheckGroup kBundleChecks;        ///< The property list and the executable.
extern const CheckGroup kFactoryChecks;       ///< The factory function.
extern const CheckGroup kFunctionBlockChecks; ///< The function block.
extern const CheckGroup kReferencesChecks;    ///< AddRef and Release.
extern const CheckGroup kInterfaceChecks;     ///< QueryInterface.
extern const CheckGroup kDispatchChecks;      ///< The main entry.
extern const CheckGroup kBlockChecks;         ///< The parameter block after a call.
extern const CheckGroup kStepsChecks;         ///< The two exported steps.
extern const CheckGroup kPreInstallChecks;    ///< Effects of the pre-install event.
extern const CheckGroup kPostInstallChecks;   ///< Preferences that the post-install event stores.
extern const CheckGroup kPreferencesChecks;   ///< Preferences that both events store.
extern const CheckGroup kStatusFileChecks;    ///< The updater's status file.
extern const CheckGroup kFinderChecks;        ///< Finder flags.
extern const CheckGroup kFaultsChecks;        ///< Failed platform calls.
extern const CheckGroup kProcessChecks;       ///< The state of the host's process.
extern const CheckGroup kVolumeChecks;        ///< The items outside the startup volume.

// The bodies of the checks that checks of other groups depend on.
void FactoryHasItsName(CheckRun& run);
void CodeLoads(CheckRun& run);
void RightTypeGivesInstance(CheckRun& run);
void InstanceLiesInPointerBlock(CheckRun& run);
void InstancesAreTheirOwn(CheckRun& run);
void SlotsAreFilled(CheckRun& run);
void CountsOneByOne(CheckRun& run);
void LastReleaseReturnsZero(CheckRun& run);
void LastReleaseFrees(CheckRun& run);
void HostInterfaceIsGiven(CheckRun& run);
void InterfaceAddsReference(CheckRun& run);
void QueriesLeaveNothing(CheckRun& run);
void PreInstallReturns(CheckRun& run);
void PostInstallReturns(CheckRun& run);
void PreInstallRunsAlone(CheckRun& run);
void PostInstallRunsAlone(CheckRun& run);
void UnknownProductStoresNoVersion(CheckRun& run);
void PreInstallChangesNothingElse(CheckRun& run);
void LanguageIsStored(CheckRun& run);
void PostInstallChangesNothingElse(CheckRun& run);
void ScopesAreRight(CheckRun& run);
void IntervalFollowsText(CheckRun& run);
void FolderFlagsAreSet(CheckRun& run);
void IconIsHidden(CheckRun& run);
void OtherItemsKeepFlags(CheckRun& run);
void NoObjectIsLeft(CheckRun& run);

} // namespace xcodhost
