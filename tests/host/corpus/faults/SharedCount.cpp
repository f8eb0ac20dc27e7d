#include "../PlugIn.h"

namespace {
SInt32 shared = 0;
}
plugin::Instance* plugin::Allocate() {
    shared = 1;
    return reinterpret_cast<Instance*>(NewPtr(sizeof(Instance)));
}
SInt32 plugin::Count(Instance*, int change) { return shared += change; }
