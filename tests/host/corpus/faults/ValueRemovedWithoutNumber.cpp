#include "../PlugIn.h"

void plugin::StoreInterval(int interval) {
    const CFNumberRef number = CFNumberCreate(kCFAllocatorDefault, kCFNumberIntType, &interval);
    CFPreferencesSetValue(CFSTR("UpdateInterval"), number, CFSTR("com.korvane.updater"),
                          kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
    if (number) Release(number);
    Synchronise(kUpdater);
}
