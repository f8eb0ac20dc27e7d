#include "../PlugIn.h"

// A step that is called directly takes no product of an even message.
extern "C" void PreInstall(char*);
extern "C" void PostInstall(char*);
namespace {
bool isInMain = false;
}
void plugin::Dispatch(Block& block) {
    isInMain = true;
    if (block.Message() == 2) PreInstall(block.Bytes());
    if (block.Message() == 3) PostInstall(block.Bytes());
    isInMain = false;
}
void plugin::StoreVersion(const Product& product) {
    if (!isInMain) return;
    SetText(kUpdater, std::string("InstalledProducts/") + product.name + "/CurrentVersion", "1.73");
    Synchronise(kUpdater);
}
