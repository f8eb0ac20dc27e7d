// Sets the key "added" in preferences domains, or removes the key. usage: VOLUME set|remove DOMAIN...
#include <CoreFoundation/CoreFoundation.h>

#include <macplatform/StartupVolume.h>

#include <cstdio>
#include <string>

int main(int count, char** arguments) {
    if (count < 3 || !macplatform::SetStartupVolume(arguments[1])) return 1;
    const CFStringRef value = arguments[2] == std::string("set") ? CFSTR("value") : nullptr;
    for (int i = 3; i < count; ++i) {
        const CFStringRef domain = CFStringCreateWithCString(nullptr, arguments[i], kCFStringEncodingUTF8);
        CFPreferencesSetValue(CFSTR("added"), value, domain, kCFPreferencesAnyUser,
                              kCFPreferencesCurrentHost);
        const bool isStored =
            CFPreferencesSynchronize(domain, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
        CFRelease(domain);
        if (!isStored) std::printf("%s\n", arguments[i]);
    }
}
