#include "../PlugIn.h"

#include <unistd.h>
void plugin::DressFolder() {
    FSRef item;
    const auto* const path = reinterpret_cast<const UInt8*>("/Applications/Korvane");
    if (FSPathMakeRef(path, &item, nullptr) != noErr && access("/Applications/Korvane", F_OK) == 0) {
        CFStringCreateWithCString(kCFAllocatorDefault, "no folder", kCFStringEncodingUTF8);
    }
    Dress("/Applications/Korvane", false, true);
}
