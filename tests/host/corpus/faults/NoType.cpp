#include "../PlugIn.h"

bool plugin::IsPlugInType(CFUUIDRef) { return false; }
