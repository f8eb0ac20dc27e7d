#pragma once

#include <langinfo.h>

/// The decimal point of the process's locale, as the C library prints and reads it; it may take several
/// bytes.
inline const char* localeDecimalPoint() {
    const char* const point = nl_langinfo(RADIXCHAR); // localeconv tells it too, among twenty other things
    return point && *point ? point : ".";
}
