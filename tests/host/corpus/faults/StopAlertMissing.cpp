#include "../PlugIn.h"

void plugin::ShowStopAlert() {}
