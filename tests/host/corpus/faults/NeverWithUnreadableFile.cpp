#include "../PlugIn.h"

void plugin::SetInterval(const Product&) {
    bool isEnabled = true;
    try {
        if (!ReadStatus(isEnabled)) isEnabled = true;
    } catch (const Unreadable&) {
        isEnabled = false;
        StoreFailure();
    }
    StoreInterval(isEnabled ? 2 : 0);
}
