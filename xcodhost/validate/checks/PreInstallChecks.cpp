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

void unknownProductHasNoEffect(CheckRun& run) {
    for (const std::int32_t product : kUnknownProducts) {
        run.ExpectNoEffect(run.Deliver(Event(kPreInstall, product)));
    }
}

void nothingElseChanges(CheckRun& run) {
    for (const ProductContract& product : kProducts) {
        run.UseFreshVolume();
        ExpectNothingBeside(run, run.Deliver(Event(kPreInstall, product.code)).changes,
                            {{kUpdaterDomain, versionKey(product)}});
    }
}

void storedInOrder(CheckRun& run) {
    const Outcome outcome = run.Deliver(Event(kPreInstall, 4900));
    ExpectOrder(run, outcome,
                {"CFPreferencesSetValue \"InstalledProducts/Fusewright/CurrentVersion\"",
                 "CFPreferencesSynchronize \"com.korvane.updater\""});
}

} // namespace

std::vector<Check> PreInstallChecks() {
    const std::vector<const char*> event = {"dispatch.pre-install"};
    return {
        Check("pre-install.version", &versionIsStored, event)
            .Claim("Pre-install stores the product's version in the updater's preferences.")
            .Reason("InstalledProducts/NAME/CurrentVersion in com.korvane.updater is the string 1.73 for "
                    "each known product. The updater compares this version with the newest version."),
        Check("pre-install.replaces", &oldVersionIsReplaced, {"pre-install.version"})
            .Claim("Pre-install replaces a stored version of any type.")
            .Reason("The file of an older installation may hold a value of another type."),
        Check("pre-install.unknown-product", &unknownProductHasNoEffect, {"dispatch.pre-install-alone"})
            .Claim("Pre-install has no effect for an unknown product.")
            .Reason("Pre-install must compare all 32 bits of the product code. The check uses codes near the "
                    "known ones and far from them."),
        Check("pre-install.nothing-else", &nothingElseChanges, {"dispatch.pre-install-alone"})
            .Claim("Pre-install changes nothing else on the volume.")
            .Reason("Pre-install sets one preference key. It changes no other key, no other file and no "
                    "Finder flag."),
        Check("pre-install.order", &storedInOrder,
              {"pre-install.version", "pre-install.nothing-else", "preferences.scope"})
            .Claim("Pre-install sets the value once and then synchronises the domain once.")
            .Reason("A value that is set after the synchronisation is lost when the installer ends."),
    };
}

} // namespace xcodhost
