#include "../PlugIn.h"

#include <csignal>
void plugin::AtEvent(Block& block) {
    if (block.Message() == 2 && block.Product() == 3500) std::raise(SIGSEGV);
}
