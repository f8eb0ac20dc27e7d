#include "../PlugIn.h"

void plugin::AddReference(Instance* instance) { instance->count += 2; }
