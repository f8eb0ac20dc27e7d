#include "Groups.h"

#include "StoredCalls.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

namespace xcodhost {

namespace {

std::string versionKey(const ProductContract& product) {
    return std::string("InstalledProducts/") + product.shortName + "/CurrentVersion";
}

const std::string kVersionValue = std::string("(string) \"") + kCurrentVersion + '"';

void versionIsStored(CheckRun& run) {
    for (const ProductContract& product : kProducts) {
        run.UseFreshVolume();
        run.Deliver(Event(kPreInstall, product.code));
        run.ExpectPreference(kUpdaterDomain, versionKey(product), kVersionValue);
    }
}

void oldVersionIsReplaced(CheckRun& run) {
    const ProductContract& product = kProducts.front();
    run.Write("/Library/Preferences/com.korvane.updater.plist",
              "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>" + versionKey(product) +
                  "</key><integer>9</integer></dict></plist>");
    run.Deliver(Event(kPreInstall, product.code));
    run.ExpectPreference(kUpdaterDomain, versionKey(product), kVersionValue);
}

void storedInOrder(CheckRun& run) {
    const Outcome outcome = run.Deliver(Event(kPreInstall, 4900));
    ExpectOrder(run, outcome,
                {"CFPreferencesSetValue \"InstalledProducts/Fusewright/CurrentVersion\"",
                 "CFPreferencesSynchronize \"com.korvane.updater\""});
}

} // namespace

void UnknownProductStoresNoVersion(CheckRun& run) {
    for (const std::int32_t product : kUnknownProducts) {
        run.ExpectNoEffect(run.Deliver(Event(kPreInstall, product)));
    }
}

void PreInstallChangesNothingElse(CheckRun& run) {
    for (const ProductContract& product : kProducts) {
        run.UseFreshVolume();
        ExpectNothingBeside(run, run.Deliver(Event(kPreInstall, product.code)).changes,
                            {{kUpdaterDomain, versionKey(product)}});
    }
}

const std::vector<Check::Body> kNeedsEvent = {&PreInstallReturns};

const CheckGroup kPreInstallChecks = {
    "pre-install",
    {
        Check("version", &versionIsStored, kNeedsEvent)
            .Claim("Pre-install stores the product's version in the updater's preferences.")
            .Reason("InstalledProducts/NAME/CurrentVersion in com.korvane.updater is the string 1.73 for "
                    "each known product. The updater compares this version with the newest version."),
        Check("replaces", &oldVersionIsReplaced, {&versionIsStored})
            .Claim("Pre-install replaces a stored version of any type.")
            .Reason("The file of an older installation may hold a value of another type."),
        Check("unknown-product", &UnknownProductStoresNoVersion, {&PreInstallRunsAlone})
            .Claim("Pre-install has no effect for an unknown product.")
            .Reason("Pre-install must compare all 32 bits of the product code. The check uses codes near the "
                    "known ones and far from them."),
        Check("nothing-else", &PreInstallChangesNothingElse, {&PreInstallRunsAlone})
            .Claim("Pre-install changes nothing else on the volume.")
            .Reason("Pre-install sets one preference key. It changes no other key, no other file and no "
                    "Finder flag."),
        Check("order", &storedInOrder, {&versionIsStored, &PreInstallChangesNothingElse, &ScopesAreRight})
            .Claim("Pre-install sets the value once and then synchronises the domain once.")
            .Reason("A value that is set after the synchronisation is lost when the installer ends."),
    }};

} // namespace xcodhost
