#include "../PlugIn.h"

#include <cstdio>
#include <unistd.h>
bool plugin::ReadStatus(bool& isEnabled) {
    if (access(kStatusFile, F_OK) != 0) {
        CFStringCreateWithCString(kCFAllocatorDefault, "no file", kCFStringEncodingUTF8);
        return false;
    }
    std::FILE* const file = std::fopen(kStatusFile, "rb");
    if (!file) throw Unreadable();
    char start[14] = {};
    isEnabled = std::fread(start, 1, 14, file) == 14 && std::memcmp(start, "UpdatesEnabled", 14) == 0;
    std::fclose(file);
    return true;
}
