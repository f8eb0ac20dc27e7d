#include "../PlugIn.h"

void plugin::StoreVersion(const Product& product) {
    SetText(kUpdater, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.73");
    SetText(kUpdater, "Installer", "VISE X");
    Synchronise(kUpdater);
}
