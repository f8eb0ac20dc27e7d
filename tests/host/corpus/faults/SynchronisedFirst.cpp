#include "../PlugIn.h"

// The value is stored all the same, by the synchronisation behind it, but a crash in between loses it.
void plugin::StoreVersion(const Product& product) {
    Synchronise(kUpdater);
    SetText(kUpdater, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.73");
    Synchronise(kUpdater);
}
