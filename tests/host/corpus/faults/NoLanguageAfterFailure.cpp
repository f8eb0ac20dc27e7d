#include "../PlugIn.h"

namespace {
bool hasFailed = false;
}
void plugin::StoreFailure() {
    hasFailed = true;
    SetText(kUpdater, "InstallStatus", "Error opening file");
    Synchronise(kUpdater);
}
void plugin::StoreLanguage(const Product& product, const char* tag) {
    if (hasFailed) return;
    SetText(product.domain, "Lang", tag);
    Synchronise(product.domain);
}
