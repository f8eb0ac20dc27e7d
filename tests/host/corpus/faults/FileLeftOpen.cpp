#include "../PlugIn.h"

#include <fcntl.h>
void plugin::DressIcon() {
    open("/Applications/Korvane/Icon\r", O_RDONLY | O_CLOEXEC);
    Dress("/Applications/Korvane/Icon\r", true, false);
}
