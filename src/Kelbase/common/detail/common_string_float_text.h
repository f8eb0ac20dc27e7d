#pragma once

#include <Kelbase/common/common_checked_types.h>

#include <string_view>

/// A floating-point number as snprintf writes it in the process's locale.
class FloatText {
public:
    static constexpr unsigned int kNoPrecision = 0xFFFFFFFF;

    /// `format` is the conversion letter; anything but f F e E g G is f. `precision` is cut to 99.
    FloatText(double value, unsigned int precision, const checked_value<unsigned int>& format);
    FloatText(const FloatText&) = delete;
    FloatText& operator=(const FloatText&) = delete;

    std::string_view View() const { return {first, length}; }

private:
    bool WriteFixed(double value, unsigned int precision, char point);
    bool WriteScientific(double value, unsigned int precision, char point);

    char capacity[1024];
    const char* first = capacity;
    std::size_t length = 0;
};
