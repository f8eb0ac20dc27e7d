#include <Kelbase/IPP/IPP_implementations.h>

// The compiler initialises this pointer, so that constructors of static objects may call the routines.
const IPP::Implementation* IPP::gDispatchedImplementation = nullptr;

const IPP::Implementation& IPP::SelectImplementation() {
    const Implementation* const* implementation = kAllImplementations;
    while (implementation[1] && !(*implementation)->isSupported()) ++implementation;
    __atomic_store_n(&gDispatchedImplementation, *implementation, __ATOMIC_RELAXED);
    return **implementation;
}
