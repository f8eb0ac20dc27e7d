#include "../PlugIn.h"

void plugin::StoreLanguage(const Product&, const char* tag) {
    SetText(kUpdater, "Lang", tag);
    Synchronise(kUpdater);
}
