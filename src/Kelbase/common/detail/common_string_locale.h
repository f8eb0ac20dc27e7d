#pragma once

#include <langinfo.h>

/// Returns the decimal point of the process's locale, which the C library prints and reads. It may have
/// several bytes.
inline const char* LocaleDecimalPoint() {
    const char* const point = nl_langinfo(RADIXCHAR); // cheaper than localeconv
    return point && *point ? point : ".";
}
