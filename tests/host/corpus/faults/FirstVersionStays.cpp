#include "../PlugIn.h"

#include <unistd.h>
void plugin::StoreVersion(const Product& product) {
    if (access("/Library/Preferences/com.korvane.updater.plist", F_OK) == 0 && product.name[0] == 'T') return;
    SetText(kUpdater, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.73");
    Synchronise(kUpdater);
}
