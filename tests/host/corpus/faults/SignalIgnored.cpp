#include "../PlugIn.h"

#include <csignal>
void plugin::DressIcon() {
    std::signal(SIGPIPE, SIG_IGN);
    Dress("/Applications/Korvane/Icon\r", true, false);
}
