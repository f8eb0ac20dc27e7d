#include "../PlugIn.h"

// And the folder only where there is one.
#include <unistd.h>
void plugin::DressFolder() {
    if (access("/Applications/Korvane/Icon\r", F_OK) == 0) Dress("/Applications/Korvane", false, true);
}
