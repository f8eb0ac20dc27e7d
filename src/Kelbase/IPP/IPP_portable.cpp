#include <Kelbase/IPP/IPP_forms.h>

const IPP::Form* const IPP::kAllForms[] = {&kScalarForm, nullptr};
