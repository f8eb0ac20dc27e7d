#pragma once

/// Gives the platform's other services access to the values of numbers.

#include <CoreFoundation/CFNumber.h>

#include "CFObject.h"

#include <cstdint>
#include <variant>

namespace macplatform {

extern const ObjectClass kNumberClass;

/// A property list distinguishes integers and floating-point numbers, so a number has two kinds of value.
using NumberValue = std::variant<std::int64_t, double>;

} // namespace macplatform

struct __CFNumber : macplatform::Object {
    explicit __CFNumber(macplatform::NumberValue held) : Object(macplatform::kNumberClass), value(held) {}
    macplatform::NumberValue value;
};
