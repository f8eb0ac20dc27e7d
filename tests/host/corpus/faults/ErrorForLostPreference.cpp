#include "../PlugIn.h"

namespace {
bool isLost = false;
}
void plugin::AtEvent(Block& block) { block.SetFlags(block.Flags() | (isLost ? 1U : 0U)); }
void plugin::Synchronise(const char* domain) {
    const CFStringRef text = CFStringCreateWithCString(kCFAllocatorDefault, domain, kCFStringEncodingUTF8);
    if (!text) return;
    isLost = !CFPreferencesSynchronize(text, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
    if (isLost) CFStringCreateWithCString(kCFAllocatorDefault, "lost", kCFStringEncodingUTF8);
    Release(text);
}
