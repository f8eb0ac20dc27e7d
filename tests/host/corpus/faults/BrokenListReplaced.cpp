#include "../PlugIn.h"

#include <cstdio>
void plugin::Synchronise(const char* domain) {
    const CFStringRef text = CFStringCreateWithCString(kCFAllocatorDefault, domain, kCFStringEncodingUTF8);
    if (!text) return;
    if (!CFPreferencesSynchronize(text, kCFPreferencesAnyUser, kCFPreferencesCurrentHost)) {
        const std::string path = std::string("/Library/Preferences/") + domain + ".plist";
        if (std::FILE* file = std::fopen(path.c_str(), "rb")) {
            const bool isBroken = std::fseek(file, 0, SEEK_END) == 0 && std::ftell(file) < 50;
            std::fclose(file);
            if (isBroken) std::remove(path.c_str());
        }
    }
    Release(text);
}
