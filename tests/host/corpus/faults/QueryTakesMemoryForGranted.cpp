#include "../PlugIn.h"

bool plugin::IsInterface(REFIID identifier) {
    const CFUUIDRef asked = CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, identifier);
    const unsigned char host[] = {0x00, 0xD5, 0xFB, 0xFE, 0x3D, 0x3D, 0x40, 0xE2,
                                  0x9D, 0xCB, 0x92, 0xED, 0x69, 0x58, 0x34, 0xF8};
    const unsigned char unknown[] = {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
    const CFUUIDBytes bytes = CFUUIDGetUUIDBytes(asked);
    Release(asked);
    return std::memcmp(&bytes, host, sizeof host) == 0 || std::memcmp(&bytes, unknown, sizeof unknown) == 0;
}
