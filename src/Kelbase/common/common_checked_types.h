#pragma once

/// A value together with whether it was given.
///
/// As a result, absent means "not found"; as an argument, absent means "take the default". Holds a `T`, which
/// must be default-constructible and copyable.
template <typename T>
class checked_value {
public:
    checked_value() : value(), given(false) {}
    /// Implicit: an argument is written as the plain value.
    checked_value(const T& v) : value(v), given(true) {}

    /// False for "not found" and "take the default", whatever the conversion to `T` then says.
    bool IsGiven() const { return given; }

    /// The value, or a default-made one when absent.
    operator T() const { return value; }

    /// Given from now on; there is no way back but to assign an absent one.
    checked_value& operator=(const T& v) {
        value = v;
        given = true;
        return *this;
    }

private:
    T value;
    bool given;
};
