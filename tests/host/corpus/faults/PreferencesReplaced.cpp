#include "../PlugIn.h"

#include <cstdio>
void plugin::StoreLanguage(const Product& product, const char* tag) {
    std::remove((std::string("/Library/Preferences/") + product.domain + ".plist").c_str());
    SetText(product.domain, "Lang", tag);
    Synchronise(product.domain);
}
