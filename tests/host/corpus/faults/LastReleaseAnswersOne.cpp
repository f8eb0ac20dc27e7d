#include "../PlugIn.h"

SInt32 plugin::Count(Instance* instance, int change) {
    const SInt32 count = instance->count += change;
    if (count == 0) Dispose(instance);
    return count == 0 ? 1 : count;
}
