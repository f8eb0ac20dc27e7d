#include <PostInstall/ProductTable.h>

// The table is a switch, because not every compiler accepts CFSTR in a constant expression.
Product FindProduct(std::int32_t productCode) {
    switch (productCode) {
    case 1400: return {CFSTR("com.korvane.audioplugins.Tamblor"), "Tamblor"};
    case 3100: return {CFSTR("com.korvane.audioapps.Restora"), "Korvane Restora"};
    case 3500: return {CFSTR("com.korvane.audioplugins.Meridian4"), "Meridian4"};
    case 5200: return {CFSTR("com.korvane.audioplugins.Gildmark"), "Gildmark"};
    case 5100: return {CFSTR("com.korvane.audioplugins.Larynth"), "Larynth"};
    case 5000: return {CFSTR("com.korvane.tonecleanser"), "TCL"};
    case 4900: return {CFSTR("com.korvane.audioplugins.Fusewright"), "Fusewright"};
    default: return {nullptr, nullptr};
    }
}
