#include "../PlugIn.h"

#include <set>
namespace {
std::set<plugin::Instance*> instances;
}
plugin::Instance* plugin::Allocate() {
    auto* const instance = reinterpret_cast<Instance*>(NewPtr(sizeof(Instance)));
    if (instance) instances.insert(instance);
    return instance;
}
void plugin::Dispose(Instance* instance) {
    instances.erase(instance);
    for (Instance* const other : instances) other->count = 0;
    DisposePtr(reinterpret_cast<Ptr>(instance));
}
