#include "../PlugIn.h"

void plugin::ShowAlert() {}
