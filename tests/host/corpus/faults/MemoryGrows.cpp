#include "../PlugIn.h"

// From the second life on.
namespace {
int events = 0;
}
void plugin::AtEvent(Block&) {
    if (++events > 30) CFStringCreateWithCString(kCFAllocatorDefault, "one more", kCFStringEncodingUTF8);
}
