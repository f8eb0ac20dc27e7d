#include "../PlugIn.h"

bool plugin::IsInterface(REFIID identifier) {
    const unsigned char unknown[] = {0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
    return std::memcmp(&identifier, unknown, sizeof unknown) == 0;
}
