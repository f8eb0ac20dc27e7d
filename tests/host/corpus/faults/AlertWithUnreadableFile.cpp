#include "../PlugIn.h"

void plugin::StoreFailure() {
    ShowAlert();
    SetText(kUpdater, "InstallStatus", "Error opening file");
    Synchronise(kUpdater);
}
