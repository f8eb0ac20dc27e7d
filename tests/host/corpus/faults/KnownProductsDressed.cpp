#include "../PlugIn.h"

namespace {
bool isKnown = false;
}
void plugin::AtEvent(Block& block) { isKnown = Find(block.Product()) != nullptr; }
void plugin::DressFolder() {
    if (isKnown) Dress("/Applications/Korvane", false, true);
}
