#include "../PlugIn.h"

void plugin::DressIcon() {
    static std::string* last;
    last = new std::string("some text that needs memory of its own");
    Dress(last->empty() ? "" : "/Applications/Korvane/Icon\r", true, false);
}
