#include "../PlugIn.h"

#include <unistd.h>
void plugin::StoreLanguage(const Product& product, const char* tag) {
    const std::string file = std::string("/Library/Preferences/") + product.domain + ".plist";
    if (access(file.c_str(), F_OK) == 0 && std::strcmp(product.name, "Tamblor") == 0) return;
    SetText(product.domain, "Lang", tag);
    Synchronise(product.domain);
}
