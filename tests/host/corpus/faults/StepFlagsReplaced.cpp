#include "../PlugIn.h"

void plugin::SetErrorBit(Block& block) { block.SetFlags(1); }
void plugin::RefuseMain(Block& block) { block.SetFlags(block.Flags() | 1); }
