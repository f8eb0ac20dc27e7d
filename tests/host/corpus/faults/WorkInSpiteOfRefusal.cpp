#include "../PlugIn.h"

void plugin::RefuseMain(Block& block) {
    SetErrorBit(block);
    StoreInterval(0);
}
