#include "../PlugIn.h"

// The event relies on the instance that was alive when it began.
namespace {
plugin::Instance* last = nullptr;
plugin::Instance* inUse = nullptr;
} // namespace
void plugin::AddReference(Instance* instance) {
    last = instance;
    instance->block->AddRef(instance);
}
void plugin::Dispose(Instance* instance) {
    if (instance == last) last = nullptr;
    DisposePtr(reinterpret_cast<Ptr>(instance));
}
void plugin::AtEvent(Block&) { inUse = last; }
void plugin::DressIcon() {
    if (inUse && inUse != last) __builtin_trap();
    Dress("/Applications/Korvane/Icon\r", true, false);
}
