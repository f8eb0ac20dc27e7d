#include "../PlugIn.h"

std::uint16_t plugin::Dressed(std::uint16_t flags, bool invisible, bool customIcon) {
    return static_cast<std::uint16_t>((flags & ~0x440E) | (invisible ? 0x4000 : 0) |
                                      (customIcon ? 0x0400 : 0));
}
