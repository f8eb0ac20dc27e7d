#pragma once

#include "TemporaryFolder.h"

#include <clocale>
#include <cstdlib>
#include <string>

/// Sets a locale with a decimal comma: an installed locale, or a locale that localedef creates. The
/// destructor sets the locale "C".
class CommaLocale {
public:
    CommaLocale() {
        for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "es_ES.UTF-8", "ru_RU.UTF-8"}) {
            if (Set(name)) return;
        }
        const std::string make = "localedef -c -i de_DE -f UTF-8 " + (made / "de_DE.UTF-8").string();
        if (std::system((make + " >/dev/null 2>&1").c_str()) == -1) return;
        setenv("LOCPATH", made.Path().c_str(), 1);
        Set("de_DE.UTF-8");
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;
    ~CommaLocale() {
        unsetenv("LOCPATH");
        std::setlocale(LC_ALL, "C");
    }

    /// Returns whether the locale is set. The result is false if no such locale is installed and localedef
    /// cannot create one.
    bool IsSet() const { return isSet; }

private:
    bool Set(const char* name) {
        return isSet = std::setlocale(LC_ALL, name) && std::string(std::localeconv()->decimal_point) == ",";
    }

    TemporaryFolder made;
    bool isSet = false;
};
