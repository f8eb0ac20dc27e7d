#include "../PlugIn.h"

SInt32 plugin::Count(Instance* instance, int change) {
    return instance->count = static_cast<std::int16_t>(instance->count + change);
}
