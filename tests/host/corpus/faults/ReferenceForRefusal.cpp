#include "../PlugIn.h"

#include <cstdint>
namespace {
plugin::Instance* newest = nullptr;
}
plugin::Instance* plugin::Allocate() {
    return newest = reinterpret_cast<Instance*>(NewPtr(sizeof(Instance)));
}
HRESULT plugin::Refuse(LPVOID* place) {
    ++newest->count;
    *place = nullptr;
    return E_NOINTERFACE;
}
