#include "../PlugIn.h"

// A synchronisation of another scope beside the right ones.
void plugin::DressIcon() {
    CFPreferencesSynchronize(CFSTR("com.korvane.updater"), kCFPreferencesCurrentUser, kCFPreferencesAnyHost);
    Dress("/Applications/Korvane/Icon\r", true, false);
}
