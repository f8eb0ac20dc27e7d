#include "../PlugIn.h"

SInt32 plugin::Count(Instance* instance, int change) {
    instance->count += change;
    return instance->count - 1;
}
