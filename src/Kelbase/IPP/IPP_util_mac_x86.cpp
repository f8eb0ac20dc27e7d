#include <Kelbase/IPP/IPP_forms.h>

const IPP::Form* const IPP::allForms[] = {&avx2Form, &sse2Form, &scalarForm, nullptr};
