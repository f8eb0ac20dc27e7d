#include "../PlugIn.h"

#include <cstdio>
void plugin::StoreVersion(const Product& product) {
    if (std::FILE* log = std::fopen("/Library/install.log", "w")) std::fclose(log);
    SetText(kUpdater, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.73");
    Synchronise(kUpdater);
}
