#include "../PlugIn.h"

void plugin::StoreVersion(const Product& product) {
    SetText(kUpdater, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.72");
    Synchronise(kUpdater);
}
