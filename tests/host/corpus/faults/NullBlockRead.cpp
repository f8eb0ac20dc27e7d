#include "../PlugIn.h"

bool plugin::IsNull(const char*) { return false; }
