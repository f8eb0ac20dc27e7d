#include "../PlugIn.h"

#include <fstream>
#include <iterator>
#include <unistd.h>
void plugin::StoreVersion(const Product& product) {
    const std::string own = std::string("/Library/Preferences/") + product.domain + ".plist";
    std::ifstream list("/Library/Preferences/com.korvane.updater.plist", std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(list), {});
    const bool isThere =
        bytes.find("InstalledProducts") != std::string::npos && access(own.c_str(), F_OK) == 0;
    if (isThere) SetText(kUpdater, "Reinstalled", "yes");
    SetText(kUpdater, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.73");
    Synchronise(kUpdater);
}
