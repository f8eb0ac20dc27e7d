#include "../PlugIn.h"

#include <sys/stat.h>
void plugin::DressFolder() {
    mkdir("/Applications/Korvane", 0755);
    Dress("/Applications/Korvane", false, true);
}
