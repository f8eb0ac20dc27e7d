#include "../PlugIn.h"

extern "C" void function_of_no_library();
void plugin::DressIcon() { function_of_no_library(); }
