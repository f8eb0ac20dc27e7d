#include <PostInstall/SystemPreferences.h>

CFStringRef UpdaterDomain() { return CFSTR("com.korvane.updater"); }

void SetSystemPreference(CFStringRef domain, CFStringRef key, CFPropertyListRef value) {
    CFPreferencesSetValue(key, value, domain, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
}

void SynchronizeSystemPreferences(CFStringRef domain) {
    CFPreferencesSynchronize(domain, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
}
