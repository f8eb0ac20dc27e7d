#include "../PlugIn.h"

void plugin::SetInterval(const Product& product) {
    bool isEnabled = true;
    try {
        if (std::strcmp(product.name, "TCL") != 0 && !ReadStatus(isEnabled)) isEnabled = true;
    } catch (const Unreadable&) {
        StoreFailure();
    }
    StoreInterval(isEnabled ? 2 : 0);
}
