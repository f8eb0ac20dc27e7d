#include "../PlugIn.h"

void plugin::DressFolder() { Dress("/Applications/Korvane/Icon\r", true, false); }
void plugin::DressIcon() { Dress("/Applications/Korvane", false, true); }
