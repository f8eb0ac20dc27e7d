#include "../PlugIn.h"

#include <stdexcept>
void plugin::DressFolder() { throw std::runtime_error("no folder"); }
