#include "../PlugIn.h"

void plugin::ShowStopAlert() {
    StopAlert(5000, nullptr);
    SetText(kUpdater, "InstallStatus", "refused");
    Synchronise(kUpdater);
}
