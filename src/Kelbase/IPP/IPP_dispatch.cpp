#include <Kelbase/IPP/IPP_implementations.h>

// Initialised before any code runs, so that constructors of static objects may call the routines.
const IPP::Form* IPP::gChosenForm = nullptr;

const IPP::Form& IPP::ChooseForm() {
    const Form* const* form = kAllForms;
    while (form[1] && !(*form)->isSupported()) ++form;
    __atomic_store_n(&gChosenForm, *form, __ATOMIC_RELAXED);
    return **form;
}
