#include "../PlugIn.h"

void plugin::ShowStopAlert() { StopAlert(5001, nullptr); }
