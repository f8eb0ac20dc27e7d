#include <CoreFoundation/CFNumber.h>

#include "CFNumberObject.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace macplatform {

namespace {

const NumberValue& toValue(const Object& object) { return static_cast<const __CFNumber&>(object).value; }

std::string describeNumber(const Object& object) {
    const NumberValue& value = toValue(object);
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return std::to_string(*whole);
    return Digits(std::get<double>(value));
}

template <typename To>
bool convert(std::int64_t whole, To& converted);
template <typename To>
bool convert(double real, To& converted);

bool equalNumbers(const Object& left, const Object& right) {
    const NumberValue& one = toValue(left);
    const NumberValue& other = toValue(right);
    if (one.index() == other.index()) return one == other;
    const double real = std::get<double>(one.index() == 1 ? one : other);
    const std::int64_t whole = std::get<std::int64_t>(one.index() == 0 ? one : other);
    std::int64_t converted = 0;
    return convert(real, converted) && converted == whole;
}

/// Sets `converted` to the nearest value of the type. Returns whether that value is the same number.
template <typename To>
bool convert(std::int64_t whole, To& converted) {
    if constexpr (std::is_floating_point_v<To>) {
        // `volatile` forces the rounding: 32-bit code would keep the exact number in an 80-bit register.
        const volatile To rounded = static_cast<To>(whole);
        converted = rounded;
        std::int64_t back = 0;
        return convert(static_cast<double>(converted), back) && back == whole;
    } else {
        using Limits = std::numeric_limits<To>;
        const bool fits = whole >= Limits::min() && whole <= Limits::max();
        converted = fits ? static_cast<To>(whole) : whole < 0 ? Limits::min() : Limits::max();
        return fits;
    }
}

template <typename To>
bool convert(double real, To& converted) {
    using Limits = std::numeric_limits<To>;
    if constexpr (std::is_same_v<To, double>) {
        converted = real;
        return true;
    } else if constexpr (std::is_floating_point_v<To>) {
        const bool overflows = std::isfinite(real) && std::abs(real) > static_cast<double>(Limits::max());
        converted = overflows ? std::copysign(Limits::infinity(), static_cast<To>(std::copysign(1.0, real)))
                              : static_cast<To>(real);
        return std::isnan(real) || static_cast<double>(converted) == real;
    } else {
        // The lowest value and its negative, the first value above the highest, are powers of two. Both are
        // exact as double.
        const double lowest = static_cast<double>(Limits::min());
        if (std::isnan(real) || real < lowest || real >= -lowest) {
            converted = std::isnan(real) ? To{0} : real < 0 ? Limits::min() : Limits::max();
            return false;
        }
        converted = static_cast<To>(real);
        return static_cast<double>(converted) == real;
    }
}

/// Calls `use` with a null pointer to the C type of the number type and returns its result. Returns false for
/// an unknown number type.
template <typename Use>
bool withCType(CFNumberType type, Use use) {
    switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
        return use(static_cast<std::int8_t*>(nullptr));
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
        return use(static_cast<std::int16_t*>(nullptr));
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
        return use(static_cast<std::int32_t*>(nullptr));
    case kCFNumberSInt64Type:
    case kCFNumberLongLongType:
        return use(static_cast<std::int64_t*>(nullptr));
    case kCFNumberLongType:
    case kCFNumberCFIndexType:
        return use(static_cast<long*>(nullptr));
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
        return use(static_cast<float*>(nullptr));
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
        return use(static_cast<double*>(nullptr));
    }
    return false;
}

std::optional<NumberValue> readValue(CFNumberType type, const void* from) {
    NumberValue value;
    const bool known = withCType(type, [&](auto* typed) {
        std::remove_pointer_t<decltype(typed)> read;
        std::memcpy(&read, from, sizeof read);
        if constexpr (std::is_floating_point_v<decltype(read)>) {
            value = static_cast<double>(read);
        } else {
            value = static_cast<std::int64_t>(read);
        }
        return true;
    });
    return known ? std::optional(value) : std::nullopt;
}

bool writeValue(const NumberValue& value, CFNumberType type, void* to) {
    return withCType(type, [&](auto* typed) {
        std::remove_pointer_t<decltype(typed)> converted{};
        const bool same = std::visit([&](auto held) { return convert(held, converted); }, value);
        std::memcpy(to, &converted, sizeof converted);
        return same;
    });
}

std::string typeName(CFNumberType type) {
    static const char* const names[] = {"SInt8",    "SInt16", "SInt32", "SInt64", "Float32",
                                        "Float64",  "Char",   "Short",  "Int",    "Long",
                                        "LongLong", "Float",  "Double", "CFIndex"};
    if (type < kCFNumberSInt8Type || type > kCFNumberCFIndexType) return std::to_string(type);
    return std::string("kCFNumber") + names[type - kCFNumberSInt8Type] + "Type";
}

} // namespace

const ObjectClass kNumberClass = {10, "number", &describeNumber, &equalNumbers, nullptr};

} // namespace macplatform

using namespace macplatform;

CFTypeID CFNumberGetTypeID() {
    PlatformCall call("CFNumberGetTypeID");
    return call.Result(kNumberClass.id);
}

CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* from) try {
    PlatformCall call("CFNumberCreate");
    if (!from) Misuse("CFNumberCreate", "the value is NULL");
    const auto value = readValue(type, from);
    const CFNumberRef number = call.ConsumeFault() || !value ? nullptr : MakeObject<__CFNumber>(0, *value);
    if (call.IsRecorded()) {
        const std::string text = value ? describeNumber(__CFNumber(*value)) : "?";
        RecordArguments(call, allocator, typeName(type), text);
    }
    return ObjectResult(call, number);
} catch (const std::bad_alloc&) {
    return nullptr;
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* to) {
    PlatformCall call("CFNumberGetValue");
    const NumberValue& value = toValue(CheckedObject(number, "CFNumberGetValue", kNumberClass));
    if (call.IsRecorded()) RecordArguments(call, number, typeName(type), std::string("buffer"));
    if (!to) Misuse("CFNumberGetValue", "the buffer is NULL");
    if (call.ConsumeFault()) return call.Result(Boolean{false});
    return call.Result(Boolean{writeValue(value, type, to)});
}
