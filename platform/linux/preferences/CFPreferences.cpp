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

constexpr __CFString anyUser(u"kCFPreferencesAnyUser", ShownAs::Name);
constexpr __CFString currentUser(u"kCFPreferencesCurrentUser", ShownAs::Name);
constexpr __CFString anyHost(u"kCFPreferencesAnyHost", ShownAs::Name);
constexpr __CFString currentHost(u"kCFPreferencesCurrentHost", ShownAs::Name);

const char otherScope[] = "not kept: only any user on the current host has preferences here";

/// What was set on the present startup volume and waits for its domain's synchronisation.
std::map<std::string, PreferenceChanges>& Waiting() {
    static std::map<std::string, std::map<std::string, PreferenceChanges>> waiting; // by the volume's folder
    return waiting[StartupVolume()];
}

/// The one scope that has a place here: the constants themselves, not texts like theirs.
bool IsStored(CFStringRef user, CFStringRef host) {
    return user == kCFPreferencesAnyUser && host == kCFPreferencesCurrentHost;
}

/// Nothing for a value that preferences cannot hold here.
std::optional<PreferenceValue> ValueToStore(CFPropertyListRef value, const char* function) {
    const Object& object = CheckedObject(value, function);
    if (object.type == &stringClass) return Utf8(static_cast<CFStringRef>(value), function);
    if (object.type != &numberClass) return std::nullopt;
    const NumberValue& number = static_cast<const __CFNumber&>(object).value;
    if (const auto* integer = std::get_if<std::int64_t>(&number)) return *integer;
    return std::get<double>(number);
}

/// Empty, or why the value does not wait.
std::string KeepWaiting(CFStringRef key, CFPropertyListRef value, CFStringRef domain, const char* function) {
    const auto keyText = Utf8(key, function), domainText = Utf8(domain, function);
    if (!keyText || !domainText) return "not kept: the name has no UTF-8 form";
    std::optional<PreferenceValue> stored;
    if (value && !(stored = ValueToStore(value, function)))
        return "not kept: preferences cannot hold this value";
    Waiting()[*domainText][*keyText] = std::move(stored);
    return {};
}

/// Empty, or why the domain was not stored.
std::string Store(CFStringRef domain, CFStringRef user, CFStringRef host, const char* function) {
    if (!IsStored(user, host)) return otherScope;
    const auto name = Utf8(domain, function);
    if (!name) return "the domain has no UTF-8 form";
    const auto waiting = Waiting().find(*name);
    if (waiting == Waiting().end()) return {};
    std::string failure = StorePreferences(*name, waiting->second);
    if (failure.empty()) Waiting().erase(waiting);
    return failure;
}

} // namespace

} // namespace macplatform

using namespace macplatform;

const CFStringRef kCFPreferencesAnyUser = &anyUser;
const CFStringRef kCFPreferencesCurrentUser = &currentUser;
const CFStringRef kCFPreferencesAnyHost = &anyHost;
const CFStringRef kCFPreferencesCurrentHost = &currentHost;

void CFPreferencesSetValue(CFStringRef key, CFPropertyListRef value, CFStringRef domain, CFStringRef user,
                           CFStringRef host) {
    PlatformCall call("CFPreferencesSetValue");
    Tell(call, key, value, domain, user, host);
    if (call.TakeFault()) return;
    // Other scopes are not kept apart: their synchronisation answers false, which tells the caller as much.
    try {
        call.SetNote(IsStored(user, host) ? KeepWaiting(key, value, domain, "CFPreferencesSetValue")
                                          : otherScope);
    } catch (const std::bad_alloc&) {
        call.SetNote("not kept: out of memory");
    }
}

Boolean CFPreferencesSynchronize(CFStringRef domain, CFStringRef user, CFStringRef host) {
    PlatformCall call("CFPreferencesSynchronize");
    Tell(call, domain, user, host);
    if (call.TakeFault()) return call.Result(Boolean{false});
    std::string failure;
    try {
        failure = Store(domain, user, host, "CFPreferencesSynchronize");
    } catch (const std::bad_alloc&) {
        failure = "out of memory";
    }
    call.SetNote(failure);
    return call.Result(Boolean{failure.empty()});
}
