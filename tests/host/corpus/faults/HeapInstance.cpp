#include "../PlugIn.h"

plugin::Instance* plugin::Allocate() { return new Instance; }
void plugin::Dispose(Instance* instance) { delete instance; }
