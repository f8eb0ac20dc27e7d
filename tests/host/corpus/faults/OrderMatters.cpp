#include "../PlugIn.h"

// Without a version that was stored before, another interval.
#include <unistd.h>
void plugin::StoreVersion(const Product& product) {
    if (access("/Library/Preferences/com.korvane.updater.plist", F_OK) == 0 &&
        access("/Library/Preferences/com.korvane.audioplugins.Fusewright.plist", F_OK) == 0) {
        DressFolder();
        SetText(kUpdater, "Late", "yes");
    }
    SetText(kUpdater, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.73");
    Synchronise(kUpdater);
}
