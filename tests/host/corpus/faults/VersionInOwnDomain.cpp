#include "../PlugIn.h"

void plugin::StoreVersion(const Product& product) {
    SetText(product.domain, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.73");
    Synchronise(product.domain);
}
