#include "Groups.h"

#include "DisplayText.h"
#include "StoredCalls.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

#include <algorithm>

namespace xcodhost {

namespace {

std::string textValue(const char* text) { return std::string("(string) \"") + text + '"'; }

/// What lies under the key now, as a tester reads it: the bare tag where it is a text.
std::string storedTag(const VolumeState& state, const ProductContract& product) {
    const auto file = state.preferences.find(product.domain);
    if (file == state.preferences.end()) return "(none)";
    const auto value = file->second.values.find(kLanguageKey);
    if (value == file->second.values.end()) return "(none)";
    const bool isText = value->second.kind == macplatform::PropertyValue::Kind::kString;
    return isText ? value->second.text : Describe(std::optional(value->second));
}

void languageIsStored(CheckRun& run) {
    for (const ProductContract& product : kProducts) {
        for (const LanguageContract& language : kLanguages) {
            run.UseFreshVolume();
            run.Deliver(Event(kPostInstall, product.code, language.code));
            const std::string seen = storedTag(run.CurrentVolume(), product);
            run.RecordCell(product.code, language.code, seen, seen == language.tag);
            run.ExpectPreference(product.domain, kLanguageKey, textValue(language.tag));
        }
    }
}

void otherLanguagesAreEnglish(CheckRun& run) {
    const ProductContract& product = kProducts.back();
    for (const std::int32_t language : kOtherLanguages) {
        run.UseFreshVolume();
        run.Deliver(Event(kPostInstall, product.code, language));
        run.ExpectPreference(product.domain, kLanguageKey, textValue("en"));
    }
}

void languageIsReplaced(CheckRun& run) {
    const ProductContract& product = kProducts.front();
    run.Deliver(Event(kPostInstall, product.code, 11));
    run.Deliver(Event(kPostInstall, product.code, 2));
    run.ExpectPreference(product.domain, kLanguageKey, textValue("de"));
}

void unknownProductStoresNothing(CheckRun& run) {
    for (const std::int32_t product : kUnknownProducts) {
        const Changes changes = run.Deliver(Event(kPostInstall, product, 11)).changes;
        run.Expect(changes.preferences.empty(), "an unknown product gets no preferences", Describe(changes));
    }
}

/// Whether there may be one is another check's matter.
bool isFailureText(const PreferenceChange& change) {
    return change.domain == kUpdaterDomain && change.key == kFailureKey;
}

void nothingElseChanges(CheckRun& run) {
    for (const ProductContract& product : kProducts) {
        for (const bool hasStatus : {true, false}) {
            SampleVolume sample;
            if (!hasStatus) sample.status.reset();
            run.UseFreshVolume(sample);
            Changes changes = run.Deliver(Event(kPostInstall, product.code)).changes;
            changes.preferences.erase(
                std::remove_if(changes.preferences.begin(), changes.preferences.end(), &isFailureText),
                changes.preferences.end());
            ExpectNothingBeside(run, changes,
                                {{kUpdaterDomain, kIntervalKey}, {product.domain, kLanguageKey}});
        }
    }
}

void storedInOrder(CheckRun& run) {
    ExpectOrder(
        run, run.Deliver(Event(kPostInstall, 4900)),
        {"CFPreferencesSetValue \"UpdateInterval\"", "CFPreferencesSynchronize \"com.korvane.updater\"",
         "CFPreferencesSetValue \"Lang\"", "CFPreferencesSynchronize \"com.korvane.audioplugins.Fusewright\"",
         "FSSetCatalogInfo \"/Applications/Korvane\"", "FSSetCatalogInfo \"/Applications/Korvane/Icon\\r\""});
}

/// The scopes stand last among the arguments of both calls.
void scopesAreRight(CheckRun& run) {
    for (const std::uint16_t message : {kPreInstall, kPostInstall}) {
        for (const macplatform::RecordedCall& entry : run.Deliver(Event(message, 4900)).calls) {
            if (entry.call.rfind("CFPreferences", 0) != 0 || entry.arguments.size() < 2) continue;
            std::string scope = entry.arguments[entry.arguments.size() - 2];
            scope.append(", ").append(entry.arguments.back());
            run.Expect(scope == "kCFPreferencesAnyUser, kCFPreferencesCurrentHost",
                       entry.call + " for any user on the current host", scope);
        }
    }
}

void otherKeysStay(CheckRun& run) {
    const ProductContract& product = kProducts.back();
    const std::string others =
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Other</key><array><integer>7"
        "</integer><string>kept</string></array></dict></plist>";
    for (const std::string& domain : {std::string(kUpdaterDomain), std::string(product.domain)}) {
        run.Write("/Library/Preferences/" + domain + ".plist", others);
    }
    run.Deliver(Event(kPreInstall, product.code));
    run.Deliver(Event(kPostInstall, product.code));
    for (const std::string& domain : {std::string(kUpdaterDomain), std::string(product.domain)}) {
        run.ExpectPreference(domain, "Other", "(array) [7, \"kept\"]");
    }
}

} // namespace

std::vector<Check> PostInstallChecks() {
    const std::vector<const char*> event = {"dispatch.post-install"};
    return {
        {"post-install.language", "The installer's language is stored in the product's own preferences.",
         "Lang in the product's domain, for each known product and each of the twelve language codes.", event,
         &languageIsStored},
        {"post-install.other-languages",
         "A language that the products do not speak is stored as English.",
         "Codes outside 0 to 11, negative ones too.",
         {"post-install.language"},
         &otherLanguagesAreEnglish},
        {"post-install.replaces",
         "A language that is stored already is replaced.",
         "Users install again in another language.",
         {"post-install.language"},
         &languageIsReplaced},
        {"post-install.unknown-product",
         "An unknown product gets no preferences.",
         "Codes are compared as 32 bits; near and far ones are tried.",
         {"dispatch.post-install-alone", "pre-install.unknown-product"},
         &unknownProductStoresNothing},
        {"post-install.nothing-else",
         "Post-install stores nothing else on the volume.",
         "Two preference keys; no further file and no further key, with and without a status file.",
         {"dispatch.post-install-alone"},
         &nothingElseChanges},
        {"post-install.order",
         "Interval, language and Finder flags are stored in this order, each domain synchronised "
         "after its "
         "value.",
         "A value that is set after the synchronisation is lost when the installer ends.",
         {"post-install.nothing-else", "post-install.language", "status-file.interval", "finder.folder",
          "finder.icon", "finder.other-items", "preferences.scope"},
         &storedInOrder},
        {"preferences.scope",
         "Every preference is for any user on the current host.",
         "The updater looks nowhere else.",
         {"dispatch.pre-install", "dispatch.post-install"},
         &scopesAreRight},
        {"preferences.other-keys",
         "Other keys of the same preferences stay as they are.",
         "The updater and the products keep their own settings there.",
         {"dispatch.pre-install", "dispatch.post-install"},
         &otherKeysStay},
    };
}

} // namespace xcodhost
