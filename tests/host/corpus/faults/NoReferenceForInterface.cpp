#include "../PlugIn.h"

void plugin::AddReference(Instance*) {}
