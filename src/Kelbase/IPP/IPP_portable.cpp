#include <Kelbase/IPP/IPP_implementations.h>

const IPP::Form* const IPP::kAllForms[] = {&kScalarForm, nullptr};
