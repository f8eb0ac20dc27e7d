#include "../PlugIn.h"

void plugin::RefuseMain(Block&) {}
