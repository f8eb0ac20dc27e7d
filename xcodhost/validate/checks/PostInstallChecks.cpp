#include "Groups.h"

#include "DisplayText.h"
#include "StoredCalls.h"
#include "contract/ProductContract.h"
#include "validate/CheckRun.h"

#include <algorithm>

namespace xcodhost {

namespace {

std::string textValue(const char* text) { return std::string("(string) \"") + text + '"'; }

/// Returns the stored language for the report: the characters of a string, the description of any other
/// value, or "(none)".
std::string storedTag(const VolumeState& state, const ProductContract& product) {
    const auto file = state.preferences.find(product.domain);
    if (file == state.preferences.end()) return "(none)";
    const auto value = file->second.values.find(kLanguageKey);
    if (value == file->second.values.end()) return "(none)";
    const bool isText = value->second.kind == macplatform::PropertyValue::Kind::kString;
    return isText ? value->second.text : Describe(std::optional(value->second));
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
        run.Expect(changes.preferences.empty(), "no preferences for an unknown product", Describe(changes));
    }
}

/// Returns whether the change is one of InstallStatus, which another check examines.
bool isFailureText(const PreferenceChange& change) {
    return change.domain == kUpdaterDomain && change.key == kFailureKey;
}

void storedInOrder(CheckRun& run) {
    ExpectOrder(
        run, run.Deliver(Event(kPostInstall, 4900)),
        {"CFPreferencesSetValue \"UpdateInterval\"", "CFPreferencesSynchronize \"com.korvane.updater\"",
         "CFPreferencesSetValue \"Lang\"", "CFPreferencesSynchronize \"com.korvane.audioplugins.Fusewright\"",
         "FSSetCatalogInfo \"/Applications/Korvane\"", "FSSetCatalogInfo \"/Applications/Korvane/Icon\\r\""});
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

void LanguageIsStored(CheckRun& run) {
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

void PostInstallChangesNothingElse(CheckRun& run) {
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

/// Both preference calls have the user scope and the host scope as their last two arguments.
void ScopesAreRight(CheckRun& run) {
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

const std::vector<Check::Body> kNeedsEvent = {&PostInstallReturns};

const CheckGroup kPostInstallChecks = {
    "post-install",
    {
        Check("language", &LanguageIsStored, kNeedsEvent)
            .Claim("Post-install stores the installer's language in the product's own preferences.")
            .Reason("The key is Lang in the product's domain. The check uses each known product and each of "
                    "the twelve language codes."),
        Check("other-languages", &otherLanguagesAreEnglish, {&LanguageIsStored})
            .Claim("Post-install stores English for any other language code.")
            .Reason("The check uses codes below 0 and above 11."),
        Check("replaces", &languageIsReplaced, {&LanguageIsStored})
            .Claim("Post-install replaces a stored language.")
            .Reason("Users install again in another language."),
        Check("unknown-product", &unknownProductStoresNothing,
              {&PostInstallRunsAlone, &UnknownProductStoresNoVersion})
            .Claim("Post-install stores no preference for an unknown product.")
            .Reason("Post-install must compare all 32 bits of the product code. The check uses codes near "
                    "the known ones and far from them."),
        Check("nothing-else", &PostInstallChangesNothingElse, {&PostInstallRunsAlone})
            .Claim("Post-install stores nothing else on the volume.")
            .Reason("Post-install sets two preference keys. It changes no other key and no other file. The "
                    "check runs with and without a status file."),
        Check("order", &storedInOrder,
              {&PostInstallChangesNothingElse, &LanguageIsStored, &IntervalFollowsText, &FolderFlagsAreSet,
               &IconIsHidden, &OtherItemsKeepFlags, &ScopesAreRight})
            .Claim("Post-install stores the interval, the language and the Finder flags in this order.")
            .Reason("Each domain is synchronised after its value. A value that is set after the "
                    "synchronisation is lost when the installer ends."),
    }};

const CheckGroup kPreferencesChecks = {
    "preferences",
    {
        Check("scope", &ScopesAreRight, {&PreInstallReturns, &PostInstallReturns})
            .Claim("Every preference is stored for any user on the current host.")
            .Reason("The updater reads only this scope."),
        Check("other-keys", &otherKeysStay, {&PreInstallReturns, &PostInstallReturns})
            .Claim("The plug-in does not change other keys of the same preferences.")
            .Reason("The updater and the products store their own settings in the same files."),
    }};

} // namespace xcodhost
