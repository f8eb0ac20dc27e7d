#include "../PlugIn.h"

void plugin::Dispose(Instance*) {}
