#include <Kelbase/IPP/IPP_implementations.h>

const IPP::Implementation* const IPP::kAllImplementations[] = {&kScalarImplementation, nullptr};
