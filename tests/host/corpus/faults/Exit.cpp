#include "../PlugIn.h"

#include <cstdlib>
void plugin::StoreVersion(const Product&) { std::_Exit(3); }
