#pragma once

/// Declares the object behind CFNumberRef, so that other sources of the platform can read the value of a
/// number.

#include <CoreFoundation/CFNumber.h>

#include "CFObject.h"

#include <cstdint>
#include <variant>

namespace macplatform {

extern const ObjectClass kNumberClass;

/// The value of a number. Property lists distinguish between integers and floating-point numbers.
using NumberValue = std::variant<std::int64_t, double>;

} // namespace macplatform

struct __CFNumber : macplatform::Object {
    explicit __CFNumber(macplatform::NumberValue number) : Object(macplatform::kNumberClass), value(number) {}
    macplatform::NumberValue value;
};
