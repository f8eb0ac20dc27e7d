#include "../PlugIn.h"

HRESULT plugin::Refuse(LPVOID* place) {
    CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, CFUUIDBytes{});
    *place = nullptr;
    return E_NOINTERFACE;
}
