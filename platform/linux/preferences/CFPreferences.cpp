#include <CoreFoundation/CFPreferences.h>

#include "PreferencesFile.h"
#include "corefoundation/CFNumberObject.h"
#include "corefoundation/CFStringObject.h"

#include <macplatform/StartupVolume.h>

#include <map>
#include <utility>

namespace macplatform {

namespace {

constexpr __CFString kAnyUser(u"kCFPreferencesAnyUser", DisplayStyle::kName);
constexpr __CFString kCurrentUser(u"kCFPreferencesCurrentUser", DisplayStyle::kName);
constexpr __CFString kAnyHost(u"kCFPreferencesAnyHost", DisplayStyle::kName);
constexpr __CFString kCurrentHost(u"kCFPreferencesCurrentHost", DisplayStyle::kName);

const char kOtherScope[] = "not stored: only any user on the current host has preferences here";

/// Returns the changes of the current startup volume that are not yet synchronised. The key of the map is the
/// domain.
std::map<std::string, PropertyListChanges>& pendingChanges() {
    static std::map<std::string, std::map<std::string, PropertyListChanges>> gWaiting; // by volume directory
    return gWaiting[StartupVolume()];
}

/// Returns whether the platform stores preferences of this user and host. Compares the references and not the
/// strings.
bool isStored(CFStringRef user, CFStringRef host) {
    return user == kCFPreferencesAnyUser && host == kCFPreferencesCurrentHost;
}

/// Returns the value to store. Returns no value if it is neither a string nor a number, or is a string that
/// cannot be encoded in UTF-8.
std::optional<PropertyValue> valueToStore(CFPropertyListRef value, const char* function) {
    const Object& object = CheckedObject(value, function);
    if (object.type == &kStringClass) {
        auto text = Utf8(static_cast<CFStringRef>(value), function);
        return text ? std::optional(StringValue(std::move(*text))) : std::nullopt;
    }
    if (object.type != &kNumberClass) return std::nullopt;
    const NumberValue& number = static_cast<const __CFNumber&>(object).value;
    if (const auto* integer = std::get_if<std::int64_t>(&number)) return IntegerValue(*integer);
    return RealValue(std::get<double>(number));
}

/// Records a change for the next synchronisation. A null value removes the key. Returns an empty string, or
/// the reason why the change was rejected.
std::string keepWaiting(CFStringRef key, CFPropertyListRef value, CFStringRef domain, const char* function) {
    const auto keyText = Utf8(key, function), domainText = Utf8(domain, function);
    if (!keyText || !domainText) return "not stored: the key or the domain cannot be encoded in UTF-8";
    std::optional<PropertyValue> stored;
    if (value && !(stored = valueToStore(value, function)))
        return "not stored: the value is neither a string nor a number";
    pendingChanges()[*domainText][*keyText] = std::move(stored);
    return {};
}

/// Stores the recorded changes of the domain. After a failure the changes stay recorded.
StoreResult store(CFStringRef domain, CFStringRef user, CFStringRef host, const char* function) {
    if (!isStored(user, host)) return {kOtherScope, {}};
    const auto name = Utf8(domain, function);
    if (!name) return {"the domain cannot be encoded in UTF-8", {}};
    const auto waiting = pendingChanges().find(*name);
    if (waiting == pendingChanges().end()) return {};
    StoreResult result = StorePreferences(*name, waiting->second);
    if (result.failure.empty()) pendingChanges().erase(waiting);
    return result;
}

} // namespace

} // namespace macplatform

using namespace macplatform;

const CFStringRef kCFPreferencesAnyUser = &kAnyUser;
const CFStringRef kCFPreferencesCurrentUser = &kCurrentUser;
const CFStringRef kCFPreferencesAnyHost = &kAnyHost;
const CFStringRef kCFPreferencesCurrentHost = &kCurrentHost;

void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                           CFStringRef host) {
    MakePlatformCall("CFPreferencesSetValue", Shown(key, value, domain, user, host), [&](PlatformCall& call) {
        // A value of another user or host is not recorded. CFPreferencesSynchronize returns false for this
        // user and host.
        call.SetNote(isStored(user, host) ? keepWaiting(key, value, domain, "CFPreferencesSetValue")
                                          : kOtherScope);
    });
}

Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host) {
    return MakePlatformCall("CFPreferencesSynchronize", Shown(domain, user, host), [&](PlatformCall& call) {
        const StoreResult result = store(domain, user, host, "CFPreferencesSynchronize");
        call.SetNote(result.failure.empty() ? result.lost : result.failure);
        return Boolean{result.failure.empty()};
    });
}
