#include "../PlugIn.h"

void plugin::AtEvent(Block& block) {
    if (block.Message() != 3 || Find(block.Product())) return;
    SetText("com.korvane.unknown", "Lang", Tag(block.Language()));
    Synchronise("com.korvane.unknown");
}
