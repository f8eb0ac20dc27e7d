#pragma once

#include <langinfo.h>

/// Returns the decimal point of the process's locale, as the C library prints and parses it. The string may
/// have several bytes. It is valid until the locale changes.
inline const char* LocaleDecimalPoint() {
    const char* const point = nl_langinfo(RADIXCHAR); // cheaper than localeconv
    return point && *point ? point : ".";
}
