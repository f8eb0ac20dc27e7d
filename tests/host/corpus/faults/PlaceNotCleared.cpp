#include "../PlugIn.h"

HRESULT plugin::Refuse(LPVOID*) { return E_NOINTERFACE; }
