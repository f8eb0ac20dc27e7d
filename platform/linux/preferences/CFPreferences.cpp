#include <CoreFoundation/CFPreferences.h>

#include "PreferencesFile.h"
#include "corefoundation/CFNumberObject.h"
#include "corefoundation/CFStringObject.h"

#include <macplatform/StartupVolume.h>

#include <map>
#include <new>
#include <utility>

namespace macplatform {

namespace {

constexpr __CFString kAnyUser(u"kCFPreferencesAnyUser", ShownAs::kName);
constexpr __CFString kCurrentUser(u"kCFPreferencesCurrentUser", ShownAs::kName);
constexpr __CFString kAnyHost(u"kCFPreferencesAnyHost", ShownAs::kName);
constexpr __CFString kCurrentHost(u"kCFPreferencesCurrentHost", ShownAs::kName);

const char kOtherScope[] = "not kept: only any user on the current host has preferences here";

/// What was set on the present startup volume and waits for its domain's synchronisation.
std::map<std::string, PreferenceChanges>& pendingChanges() {
    static std::map<std::string, std::map<std::string, PreferenceChanges>> gWaiting; // by the volume's folder
    return gWaiting[StartupVolume()];
}

/// The one scope that has a place here: the constants themselves, not texts like theirs.
bool isStored(CFStringRef user, CFStringRef host) {
    return user == kCFPreferencesAnyUser && host == kCFPreferencesCurrentHost;
}

/// Nothing for a value that preferences cannot hold here.
std::optional<PreferenceValue> valueToStore(CFPropertyListRef value, const char* function) {
    const Object& object = CheckedObject(value, function);
    if (object.type == &kStringClass) return Utf8(static_cast<CFStringRef>(value), function);
    if (object.type != &kNumberClass) return std::nullopt;
    const NumberValue& number = static_cast<const __CFNumber&>(object).value;
    if (const auto* integer = std::get_if<std::int64_t>(&number)) return *integer;
    return std::get<double>(number);
}

/// Empty, or why the value does not wait.
std::string keepWaiting(CFStringRef key, CFPropertyListRef value, CFStringRef domain, const char* function) {
    const auto keyText = Utf8(key, function), domainText = Utf8(domain, function);
    if (!keyText || !domainText) return "not kept: the name has no UTF-8 form";
    std::optional<PreferenceValue> stored;
    if (value && !(stored = valueToStore(value, function)))
        return "not kept: preferences cannot hold this value";
    pendingChanges()[*domainText][*keyText] = std::move(stored);
    return {};
}

/// Empty, or why the domain was not stored.
std::string store(CFStringRef domain, CFStringRef user, CFStringRef host, const char* function) {
    if (!isStored(user, host)) return kOtherScope;
    const auto name = Utf8(domain, function);
    if (!name) return "the domain has no UTF-8 form";
    const auto waiting = pendingChanges().find(*name);
    if (waiting == pendingChanges().end()) return {};
    std::string failure = StorePreferences(*name, waiting->second);
    if (failure.empty()) pendingChanges().erase(waiting);
    return failure;
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
    PlatformCall call("CFPreferencesSetValue");
    RecordArguments(call, key, value, domain, user, host);
    if (call.ConsumeFault()) return;
    // Other scopes are not kept apart: their synchronisation answers false, which tells the caller as much.
    try {
        call.SetNote(isStored(user, host) ? keepWaiting(key, value, domain, "CFPreferencesSetValue")
                                          : kOtherScope);
    } catch (const std::bad_alloc&) {
        call.SetNote("not kept: out of memory");
    }
}

Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host) {
    PlatformCall call("CFPreferencesSynchronize");
    RecordArguments(call, domain, user, host);
    if (call.ConsumeFault()) return call.Result(Boolean{false});
    std::string failure;
    try {
        failure = store(domain, user, host, "CFPreferencesSynchronize");
    } catch (const std::bad_alloc&) {
        failure = "out of memory";
    }
    call.SetNote(failure);
    return call.Result(Boolean{failure.empty()});
}
