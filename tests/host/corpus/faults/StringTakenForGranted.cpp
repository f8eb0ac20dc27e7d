#include "../PlugIn.h"

void plugin::Synchronise(const char* domain) {
    const CFStringRef text = CFStringCreateWithCString(kCFAllocatorDefault, domain, kCFStringEncodingUTF8);
    CFPreferencesSynchronize(text, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
    Release(text);
}
