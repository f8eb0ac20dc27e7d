#include "../PlugIn.h"

bool plugin::ReadStatus(bool& isEnabled) { return isEnabled = true; }
