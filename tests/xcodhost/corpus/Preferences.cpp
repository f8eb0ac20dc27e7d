// The stored preferences, and the status file that decides some of them.

#include "PlugIn.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <strings.h>
#include <unistd.h>

namespace plugin {

namespace {

constexpr const char* kStatusFile = "/Library/Application Support/Korvane/Updater/install_status.txt";
bool gHasFailed = false;

std::string preferencesPath(const char* domain) {
    return std::string("/Library/Preferences/") + domain + ".plist";
}
bool hasPropertyList(const char* domain) { return access(preferencesPath(domain).c_str(), F_OK) == 0; }

void release(CFTypeRef object) {
    if (object || Is("StringUnchecked")) CFRelease(object);
}

void removeBrokenPropertyList(const std::string& plist) {
    std::FILE* const file = std::fopen(plist.c_str(), "rb");
    if (!file) return;
    const bool isBroken = std::fseek(file, 0, SEEK_END) == 0 && std::ftell(file) < 50;
    std::fclose(file);
    if (isBroken) std::remove(plist.c_str());
}

void synchronise(const char* domain) {
    const CFStringRef text = NewText(domain);
    if (text || Is("StringUnchecked")) {
        const bool isStored =
            CFPreferencesSynchronize(text, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
        if (!isStored && Is("LeakForLostPreference")) NewText("lost");
        if (!isStored && Is("BrokenPropertyListReplaced")) removeBrokenPropertyList(preferencesPath(domain));
    }
    release(text);
}

void set(const char* domain, const char* key, CFPropertyListRef value) {
    const CFStringRef domainText = NewText(domain), keyText = NewText(key);
    if (domainText && keyText)
        CFPreferencesSetValue(keyText, value, domainText, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
    release(domainText);
    release(keyText);
}

bool holdsVersions(const std::string& plist) {
    std::ifstream file(plist, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    return bytes.find("InstalledProducts") != std::string::npos;
}

/// Faults whose effect depends on the preferences of an earlier installation.
void readOlderPropertyLists(const Product& product) {
    const bool hasOwn = hasPropertyList(product.domain);
    if (!hasPropertyList(kUpdater)) return;
    if (Is("AgainBeforePostInstall") && !hasOwn) SetText(kUpdater, "Again", "yes");
    if (Is("OrderMatters") && hasPropertyList("com.korvane.audioplugins.Fusewright")) {
        SetFolderFlags(true);
        SetText(kUpdater, "Late", "yes");
    }
    if (Is("ReinstallationStored") && hasOwn && holdsVersions(preferencesPath(kUpdater)))
        SetText(kUpdater, "Reinstalled", "yes");
}

enum class Status { kMissing, kUnreadable, kDisabled, kEnabled };

Status readStatus() {
    if (access(kStatusFile, F_OK) != 0) return Status::kMissing;
    std::FILE* const file = std::fopen(kStatusFile, Is("StatusFileEmptied") ? "r+b" : "rb");
    if (!file) return Status::kUnreadable;
    char start[15] = {};
    const bool isWhole = std::fread(start, 1, 14, file) == 14;
    const bool isEnabled =
        isWhole && (Is("CaseIgnored") ? strcasecmp : std::strcmp)(start, "UpdatesEnabled") == 0;
    if (!isEnabled && Is("StatusFileEmptied")) std::fputc('\n', file);
    std::fclose(file);
    return isEnabled ? Status::kEnabled : Status::kDisabled;
}

bool isNever(Status status) {
    if (Is("IntervalAlwaysTwo")) return false;
    return status == Status::kDisabled || (status == Status::kMissing && Is("MissingMeansNever")) ||
           (status == Status::kUnreadable && Is("NeverWithUnreadableFile"));
}

void storeFailure() {
    gHasFailed = true;
    if (Is("AlertWithUnreadableFile")) ShowAlert();
    if (!Is("FailureNotStored"))
        SetText(kUpdater, "InstallStatus", Is("FailureTextOther") ? "failed" : "Error opening file");
}

const char* tag(std::int32_t language) {
    const char* const tags[] = {"en", "fr", "de", "it", "en", "en", "es", "en", "en", "en", "en", "ja"};
    if (Is("NegativeLanguage") && language < 0) return "de";
    if (Is("JapaneseAsFrench") && language == 11) return "fr";
    return static_cast<std::uint32_t>(language) < 12 ? tags[language] : "en";
}

} // namespace

void SetText(const char* domain, const char* key, const char* text) {
    const CFStringRef value = NewText(text);
    if (value) set(domain, key, value);
    release(value);
    synchronise(domain);
}

void StoreVersion(const Product& product) {
    if (Is("Exit")) std::_Exit(3);
    while (Is("OutputFlood")) std::puts("more and more");
    if (Is("FirstVersionStays") && hasPropertyList(kUpdater) && product.name[0] == 'T') return;
    if (Is("FileCreated")) std::ofstream("/Library/install.log");
    if (Is("MoreStored")) SetText(kUpdater, "Installer", "VISE X");
    if (Is("SynchronisedFirst")) synchronise(kUpdater); // a crash after this call loses the value
    readOlderPropertyLists(product);
    std::string name = product.name;
    if (Is("VersionOfSpacelessName")) name.erase(0, name.find(' ') + 1);
    SetText(Is("VersionInOwnDomain") ? product.domain : kUpdater,
            ("InstalledProducts/" + name + "/CurrentVersion").c_str(), Is("OtherVersion") ? "1.72" : "1.73");
}

void SetInterval(const Product& product) {
    const bool isSkipped = Is("OneProductWithoutInterval") && std::strcmp(product.name, "TCL") == 0;
    const Status status = isSkipped ? Status::kEnabled : readStatus();
    if (status == Status::kMissing && Is("MissingFileLeaks")) NewText("no file");
    if (status == Status::kUnreadable || (status == Status::kMissing && Is("FailureWithoutFile")))
        storeFailure();
    StoreInterval(isNever(status) ? 0 : 2);
}

void StoreInterval(int interval) {
    const CFNumberRef number = CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &interval);
    if (!number && !Is("ValueRemovedWithoutNumber")) return;
    set(kUpdater, "UpdateInterval", number);
    release(number);
    synchronise(kUpdater);
}

void StoreLanguage(const Product& product, std::int32_t language) {
    const bool isFirst = !hasPropertyList(product.domain);
    if (Is("FirstLanguageStays") && !isFirst && std::strcmp(product.name, "Tamblor") == 0) return;
    if (Is("NoLanguageAfterFailure") && gHasFailed) return;
    if (Is("PreferencesReplaced")) std::remove(preferencesPath(product.domain).c_str());
    if (!Is("LanguageInUpdaterDomain")) SetText(product.domain, "Lang", tag(language));
    if (Is("LanguageInUpdaterDomain") || Is("LanguageInBothDomains"))
        SetText(kUpdater, "Lang", tag(language));
}

} // namespace plugin
