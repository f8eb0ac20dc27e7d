#include "../PlugIn.h"

void plugin::DressIcon() {
    CFStringCreateWithCString(kCFAllocatorDefault, "left behind", kCFStringEncodingUTF8);
    Dress("/Applications/Korvane/Icon\r", true, false);
}
