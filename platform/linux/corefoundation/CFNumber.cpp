#include <CoreFoundation/CFNumber.h>

#include "CFNumberObject.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace macplatform {

namespace {

const NumberValue& toValue(const Object& object) { return static_cast<const __CFNumber&>(object).value; }

std::string describeNumber(const Object& object) {
    const NumberValue& value = toValue(object);
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return std::to_string(*whole);
    return Digits(std::get<double>(value));
}

/// The conversions store what the processor's conversion gives: an integer is cut to the width of the type,
/// and a real number out of range gives the lowest integer. They return whether the result is the same
/// number.

/// An unsigned value that fits the width of a signed type counts as the same number: 255 as SInt8.
template <typename To>
std::enable_if_t<std::is_integral_v<To>, bool> convert(std::int64_t whole, To& converted) {
    using Unsigned = std::make_unsigned_t<To>;
    converted = static_cast<To>(static_cast<Unsigned>(whole));
    if (whole < 0) return whole >= std::numeric_limits<To>::min();
    return static_cast<std::uint64_t>(whole) <= std::numeric_limits<Unsigned>::max();
}

/// Returns the integer part, and the lowest value of the type for a number that does not fit.
template <typename To>
To truncated(double real) {
    // The lowest value and its negative, the first value above the highest, are exact as double.
    const double lowest = static_cast<double>(std::numeric_limits<To>::min());
    return real >= lowest && real < -lowest ? static_cast<To>(real) : std::numeric_limits<To>::min();
}

template <typename To>
std::enable_if_t<std::is_integral_v<To>, bool> convert(double real, To& converted) {
    if constexpr (sizeof(To) < sizeof(std::int64_t)) {
        convert(std::int64_t{truncated<std::int32_t>(real)}, converted);
    } else {
        converted = truncated<To>(real);
    }
    return static_cast<double>(converted) == real;
}

template <typename To>
std::enable_if_t<std::is_floating_point_v<To>, bool> convert(std::int64_t whole, To& converted) {
    // `volatile` forces the rounding: 32-bit code would keep the exact number in an 80-bit register.
    const volatile To rounded = static_cast<To>(whole);
    converted = rounded;
    return truncated<std::int64_t>(static_cast<double>(converted)) == whole;
}

bool convert(double real, double& converted) {
    converted = real;
    return true;
}

/// A NaN is never the same number.
bool convert(double real, float& converted) {
    const bool overflows =
        std::isfinite(real) && std::abs(real) > static_cast<double>(std::numeric_limits<float>::max());
    const double infinity = std::copysign(std::numeric_limits<double>::infinity(), real);
    converted = static_cast<float>(overflows ? infinity : real);
    return static_cast<double>(converted) == real;
}

/// Returns whether two real numbers are equal. All NaNs are equal. The two zeros differ.
bool equalReals(double one, double other) {
    if (std::isnan(one) || std::isnan(other)) return std::isnan(one) && std::isnan(other);
    return one == other && std::signbit(one) == std::signbit(other);
}

bool equalNumbers(const Object& left, const Object& right) {
    const NumberValue& one = toValue(left);
    const NumberValue& other = toValue(right);
    const auto* const whole = std::get_if<std::int64_t>(&one);
    const auto* const otherWhole = std::get_if<std::int64_t>(&other);
    if (whole && otherWhole) return *whole == *otherWhole;
    double real = 0;
    const bool isExact = std::visit([&real](auto number) { return convert(number, real); }, one);
    double otherReal = 0;
    const bool otherIsExact =
        std::visit([&otherReal](auto number) { return convert(number, otherReal); }, other);
    return isExact && otherIsExact && equalReals(real, otherReal);
}

/// Calls `use` with a null pointer to the C type of the number type and returns its result. Returns false for
/// an unknown number type.
template <typename Use>
bool withCType(CFNumberType type, Use use) {
    switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType: return use(static_cast<std::int8_t*>(nullptr));
    case kCFNumberSInt16Type:
    case kCFNumberShortType: return use(static_cast<std::int16_t*>(nullptr));
    case kCFNumberSInt32Type:
    case kCFNumberIntType: return use(static_cast<std::int32_t*>(nullptr));
    case kCFNumberSInt64Type:
    case kCFNumberLongLongType: return use(static_cast<std::int64_t*>(nullptr));
    case kCFNumberLongType:
    case kCFNumberCFIndexType: return use(static_cast<long*>(nullptr));
    case kCFNumberFloat32Type:
    case kCFNumberFloatType: return use(static_cast<float*>(nullptr));
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType: return use(static_cast<double*>(nullptr));
    }
    return false;
}

/// Returns 0 for an unknown type. The size of such a value is unknown, so that it is not read.
NumberValue readValue(CFNumberType type, const void* from) {
    NumberValue value;
    withCType(type, [&](auto* typed) {
        std::remove_pointer_t<decltype(typed)> read;
        std::memcpy(&read, from, sizeof read);
        if constexpr (std::is_floating_point_v<decltype(read)>) {
            value = static_cast<double>(read);
        } else {
            value = static_cast<std::int64_t>(read);
        }
        return true;
    });
    return value;
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
    return MakePlatformCall("CFNumberGetTypeID", [] { return kNumberClass.id; });
}

CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* from) {
    if (!from) Misuse("CFNumberCreate", "the value is NULL");
    const NumberValue value = readValue(type, from);
    const auto show = [&] {
        return ArgumentTexts(allocator, typeName(type), describeNumber(__CFNumber(value)));
    };
    return MakeObjectCall("CFNumberCreate", show,
                          [&] { return CFNumberRef{MakeObject<__CFNumber>(0, value)}; });
}

Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* to) {
    const NumberValue& value = toValue(CheckedObject(number, "CFNumberGetValue", kNumberClass));
    if (!to) Misuse("CFNumberGetValue", "the buffer is NULL");
    const auto show = [&] { return ArgumentTexts(number, typeName(type), std::string("buffer")); };
    return MakePlatformCall("CFNumberGetValue", show, [&] { return Boolean{writeValue(value, type, to)}; });
}
