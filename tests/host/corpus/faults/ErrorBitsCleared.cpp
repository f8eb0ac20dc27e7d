#include "../PlugIn.h"

void plugin::RefuseMain(Block& block) { block.SetFlags(1); }
