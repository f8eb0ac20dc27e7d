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
        {"pre-install.version", "The product's version is stored under its key in the updater's preferences.",
         "InstalledProducts/NAME/CurrentVersion in com.korvane.updater is the text 1.73, for each known "
         "product. "
         "The updater compares it with the newest one.",
         event, &versionIsStored},
        {"pre-install.replaces",
         "A version that is stored already is replaced, whatever its type.",
         "The file of an older installation may hold anything under the key.",
         {"pre-install.version"},
         &oldVersionIsReplaced},
        {"pre-install.unknown-product",
         "An unknown product is left alone.",
         "No preference is stored. Codes are compared as 32 bits; near and far ones are tried.",
         {"dispatch.pre-install-alone"},
         &unknownProductHasNoEffect},
        {"pre-install.nothing-else",
         "Pre-install changes nothing else on the volume.",
         "One preference key; no further file, key or Finder flag.",
         {"dispatch.pre-install-alone"},
         &nothingElseChanges},
        {"pre-install.order",
         "The value is set once, and then the domain is synchronised once.",
         "A value that is set after the synchronisation is lost when the installer ends.",
         {"pre-install.version", "pre-install.nothing-else", "preferences.scope"},
         &storedInOrder},
    };
}

} // namespace xcodhost
