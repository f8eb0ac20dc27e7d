#pragma once

#include <Kelbase/common/common_checked_types.h>

#include <string_view>

/// The text of a floating-point number, equal to the output of snprintf in the locale of the process.
class FloatText {
public:
    static constexpr unsigned int kNoPrecision = 0xFFFFFFFF;

    /// `format` is the conversion letter: f, F, e, E, g or G. An absent format and any other value mean f. A
    /// precision above 99 is reduced to 99, except that `kNoPrecision` means 6.
    FloatText(double value, unsigned int precision, const checked_value<unsigned int>& format);
    FloatText(const FloatText&) = delete;
    FloatText& operator=(const FloatText&) = delete;

    /// Returns the text. The view is valid as long as the object exists.
    std::string_view View() const { return {first, length}; }

private:
    bool WriteFixed(double value, unsigned int precision, char point);
    bool WriteScientific(double value, unsigned int precision, char point);

    char capacity[1024];
    const char* first = capacity;
    std::size_t length = 0;
};
