#include "../PlugIn.h"

bool plugin::IsInterface(REFIID) { return true; }
