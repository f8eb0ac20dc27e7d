#include "../PlugIn.h"

void plugin::AtEvent(Block& block) {
    if (block.Product() == 5000) SetErrorBit(block);
}
