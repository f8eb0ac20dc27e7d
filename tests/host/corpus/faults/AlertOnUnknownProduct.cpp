#include "../PlugIn.h"

void plugin::AtEvent(Block& block) {
    if (block.Product() == 1234 && block.Language() == 0) ShowStopAlert();
}
