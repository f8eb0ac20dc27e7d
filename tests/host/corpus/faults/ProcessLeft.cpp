#include "../PlugIn.h"

#include <unistd.h>
void plugin::DressIcon() {
    if (fork() == 0) {
        setsid();
        while (true) pause();
    }
    Dress("/Applications/Korvane/Icon\r", true, false);
}
