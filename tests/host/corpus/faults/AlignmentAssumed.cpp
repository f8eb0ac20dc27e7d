#include "../PlugIn.h"

void plugin::AtEvent(Block& block) {
    if (reinterpret_cast<std::uintptr_t>(block.Bytes()) % 2 != 0) SetErrorBit(block);
}
