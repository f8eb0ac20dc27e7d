#include "../PlugIn.h"

void plugin::StoreFailure() {
    SetText(kUpdater, "InstallStatus", "failed");
    Synchronise(kUpdater);
}
