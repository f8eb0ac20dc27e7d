#include "../PlugIn.h"

namespace {
const bool isFilled = (plugin::functions._reserved = &plugin::functions) != nullptr;
}
