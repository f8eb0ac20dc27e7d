#include "../PlugIn.h"

void plugin::StoreFailure() {}
