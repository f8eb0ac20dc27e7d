#include "../PlugIn.h"

#include <cstdio>
#include <strings.h>
#include <unistd.h>
bool plugin::ReadStatus(bool& isEnabled) {
    if (access(kStatusFile, F_OK) != 0) return false;
    std::FILE* const file = std::fopen(kStatusFile, "rb");
    if (!file) throw Unreadable();
    char start[15] = {};
    isEnabled = std::fread(start, 1, 14, file) == 14 && strcasecmp(start, "UpdatesEnabled") == 0;
    std::fclose(file);
    return true;
}
