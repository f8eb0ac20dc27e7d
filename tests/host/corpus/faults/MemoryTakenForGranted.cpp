#include "../PlugIn.h"

plugin::Instance* plugin::Allocate() {
    auto* const instance = reinterpret_cast<Instance*>(NewPtr(sizeof(Instance)));
    instance->count = 0;
    return instance;
}
