#include <Kelbase/IPP/IPP_forms.h>

namespace {

// Set before any code runs, so that constructors of static objects may use the routines. Threads that meet
// here at the first call find the same answer; the builtins keep even that from being a data race.
const IPP::Form* chosen = nullptr;

const IPP::Form* bestForm() {
    const IPP::Form* const* form = IPP::allForms;
    while (form[1] && !(*form)->isSupported()) ++form;
    return *form;
}

} // namespace

const IPP::Form& IPP::ChosenForm() {
    const Form* form = __atomic_load_n(&chosen, __ATOMIC_RELAXED);
    if (!form) {
        form = bestForm();
        __atomic_store_n(&chosen, form, __ATOMIC_RELAXED);
    }
    return *form;
}
