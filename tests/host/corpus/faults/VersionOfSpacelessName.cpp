#include "../PlugIn.h"

void plugin::StoreVersion(const Product& product) {
    std::string name = product.name;
    name.erase(0, name.find(' ') + 1);
    SetText(kUpdater, "InstalledProducts/" + name + "/CurrentVersion", "1.73");
    Synchronise(kUpdater);
}
