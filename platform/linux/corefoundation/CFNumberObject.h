#pragma once

/// Numbers seen from the platform's other services.

#include <CoreFoundation/CFNumber.h>

#include "CFObject.h"

#include <cstdint>
#include <variant>

namespace macplatform {

extern const ObjectClass kNumberClass;

/// Whole numbers and floating-point numbers are kept apart, as a property list keeps them.
using NumberValue = std::variant<std::int64_t, double>;

} // namespace macplatform

struct __CFNumber : macplatform::Object {
    explicit __CFNumber(macplatform::NumberValue held) : Object(macplatform::kNumberClass), value(held) {}
    macplatform::NumberValue value;
};
