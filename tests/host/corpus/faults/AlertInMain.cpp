#include "../PlugIn.h"

void plugin::RefuseMain(Block& block) {
    ShowAlert();
    SetErrorBit(block);
}
