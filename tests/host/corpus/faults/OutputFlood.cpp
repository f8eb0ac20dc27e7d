#include "../PlugIn.h"

#include <cstdio>
void plugin::StoreVersion(const Product&) {
    while (true) std::puts("more and more");
}
