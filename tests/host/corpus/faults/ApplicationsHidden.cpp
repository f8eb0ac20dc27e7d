#include "../PlugIn.h"

void plugin::DressFolder() {
    Dress("/Applications/Korvane", false, true);
    Dress("/Applications", true, false);
}
