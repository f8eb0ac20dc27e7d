#include "../PlugIn.h"

void plugin::SetErrorBit(Block&) {}
void plugin::RefuseMain(Block& block) { block.SetFlags(block.Flags() | 1); }
