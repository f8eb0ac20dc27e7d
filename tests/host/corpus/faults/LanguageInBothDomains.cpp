#include "../PlugIn.h"

void plugin::StoreLanguage(const Product& product, const char* tag) {
    SetText(product.domain, "Lang", tag);
    Synchronise(product.domain);
    SetText(kUpdater, "Lang", tag);
    Synchronise(kUpdater);
}
