#include "../PlugIn.h"

HRESULT plugin::Refuse(LPVOID* place) {
    *place = nullptr;
    return static_cast<HRESULT>(0x80004005);
}
