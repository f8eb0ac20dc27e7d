#include "../PlugIn.h"

#include <cstdio>
void plugin::DressIcon() {
    std::puts("icon hidden");
    Dress("/Applications/Korvane/Icon\r", true, false);
}
