#include "../PlugIn.h"

extern "C" void PreInstall(char*);
extern "C" void PostInstall(char*);
void plugin::Dispatch(Block& block) {
    if (block.Message() == 2 || block.Message() == 3) PreInstall(block.Bytes());
    if (block.Message() == 3) PostInstall(block.Bytes());
}
