#include "../PlugIn.h"

#include <unistd.h>
void plugin::StoreVersion(const Product& product) {
    const std::string own = std::string("/Library/Preferences/") + product.domain + ".plist";
    const bool isAgain = access("/Library/Preferences/com.korvane.updater.plist", F_OK) == 0;
    if (isAgain && access(own.c_str(), F_OK) != 0) SetText(kUpdater, "Again", "yes");
    SetText(kUpdater, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.73");
    Synchronise(kUpdater);
}
