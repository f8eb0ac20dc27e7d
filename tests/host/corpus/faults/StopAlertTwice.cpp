#include "../PlugIn.h"

void plugin::ShowStopAlert() {
    StopAlert(5000, nullptr);
    StopAlert(5000, nullptr);
}
