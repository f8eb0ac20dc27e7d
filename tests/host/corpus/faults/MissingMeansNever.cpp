#include "../PlugIn.h"

#include <cstdio>
#include <unistd.h>
bool plugin::ReadStatus(bool& isEnabled) {
    isEnabled = false;
    if (access(kStatusFile, F_OK) != 0) return true;
    std::FILE* const file = std::fopen(kStatusFile, "rb");
    if (!file) throw Unreadable();
    char start[14] = {};
    isEnabled = std::fread(start, 1, 14, file) == 14 && std::memcmp(start, "UpdatesEnabled", 14) == 0;
    std::fclose(file);
    return true;
}
