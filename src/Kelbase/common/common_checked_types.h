#pragma once

/// A value with a flag that says whether the value was given.
///
/// An absent result means "not found". An absent argument means "use the default". `T` must be
/// default-constructible and copyable.
template <typename T>
class checked_value {
public:
    checked_value() : value(), given(false) {}
    /// Implicit, so that callers can pass the plain value.
    checked_value(const T& v) : value(v), given(true) {}

    /// Returns false for an absent value. The conversion to `T` does not show the difference.
    bool IsGiven() const { return given; }

    /// Returns the value, or a default-constructed `T` if the value is absent.
    operator T() const { return value; }

    /// Sets the value. Only the assignment of an absent `checked_value` makes the value absent again.
    checked_value& operator=(const T& v) {
        value = v;
        given = true;
        return *this;
    }

private:
    T value;
    bool given;
};
