#include "../PlugIn.h"

void plugin::AtEvent(Block& block) { block.Bytes()[20] = 1; }
