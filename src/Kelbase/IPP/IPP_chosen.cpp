#include <Kelbase/IPP/IPP_forms.h>

// Initialised before any code runs, so that constructors of static objects may call the routines.
const IPP::Form* IPP::chosenForm = nullptr;

const IPP::Form& IPP::ChooseForm() {
    const Form* const* form = allForms;
    while (form[1] && !(*form)->isSupported()) ++form;
    __atomic_store_n(&chosenForm, *form, __ATOMIC_RELAXED);
    return **form;
}
