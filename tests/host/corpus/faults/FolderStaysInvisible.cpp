#include "../PlugIn.h"

std::uint16_t plugin::Dressed(std::uint16_t flags, bool invisible, bool customIcon) {
    const int icon = customIcon ? 0x0400 : 0;
    const int hidden = customIcon ? flags & 0x4000 : invisible ? 0x4000 : 0;
    return static_cast<std::uint16_t>((flags & ~0x4400) | hidden | icon);
}
