#include "../PlugIn.h"

// On the first event.
void plugin::AtEvent(Block&) { functions._reserved = &functions; }
