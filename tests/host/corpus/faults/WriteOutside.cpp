#include "../PlugIn.h"

#include <cstdio>
void plugin::DressIcon() {
    if (std::FILE* log = std::fopen("/tmp/xcodhost-corpus.log", "a")) std::fclose(log);
    std::remove("/tmp/xcodhost-corpus.log");
    Dress("/Applications/Korvane/Icon\r", true, false);
}
