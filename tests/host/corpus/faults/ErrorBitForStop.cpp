#include "../PlugIn.h"

// Only where somebody saw the stop alert.
namespace {
bool isSeen = false;
}
void plugin::ShowStopAlert() { isSeen = StopAlert(5000, nullptr) == -1; }
void plugin::SetErrorBit(Block& block) {
    if (!isSeen || block.Message() != 3) block.SetFlags(block.Flags() | 1);
}
