#include "../PlugIn.h"

void plugin::SetInterval(const Product&) {
    bool isEnabled = true;
    try {
        if (!ReadStatus(isEnabled)) StoreFailure();
    } catch (const Unreadable&) {
        StoreFailure();
    }
    StoreInterval(isEnabled ? 2 : 0);
}
