#include "../PlugIn.h"

void plugin::AtEvent(Block& block) {
    if (block.Bytes()[100] != 0) SetErrorBit(block);
}
