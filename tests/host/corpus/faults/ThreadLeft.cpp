#include "../PlugIn.h"

#include <thread>
#include <unistd.h>
void plugin::DressIcon() {
    std::thread([] {
        while (true) pause();
    }).detach();
    Dress("/Applications/Korvane/Icon\r", true, false);
}
