// Parses numbers. The results must equal those of a second implementation that has no fast paths.

#include "NumberModel.h"
#include "Property.h"
#include "Text.h"

#include <cmath>

namespace {

template <typename T>
std::string shown(const number_model::Parsed<T>& number) {
    return (number.ok ? "read " : "failed ") + std::to_string(number.value);
}

template <typename T, typename Parse>
void check(const number_model::Parsed<T>& expected, Parse parse, const char* claim) {
    number_model::Parsed<T> seen = {!expected.ok, 0};
    seen.value = parse(&seen.ok);
    RequireEqual(shown(seen), shown(expected), claim);
}

void checkIntegers(const std::string& bytes, unsigned int base) {
    const String text = TextOf(bytes);
    const number_model::Integers expected(bytes, base);
    check(
        expected.toShort, [&](bool* ok) { return text.ToShort(ok, base); }, "ToShort");
    check(
        expected.toUShort, [&](bool* ok) { return text.ToUShort(ok, base); }, "ToUShort");
    check(
        expected.toInt, [&](bool* ok) { return text.ToInt(ok, base); }, "ToInt");
    check(
        expected.toUInt, [&](bool* ok) { return text.ToUInt(ok, base); }, "ToUInt");
    check(
        expected.toInt64, [&](bool* ok) { return text.ToInt64(ok, base); }, "ToInt64");
    check(
        expected.toUInt64, [&](bool* ok) { return text.ToUInt64(ok, base); }, "ToUInt64");
}

template <typename T>
bool areSame(T a, T b) {
    return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}

void checkReal(const std::string& bytes) {
    const String text = TextOf(bytes);
    const number_model::Parsed<double> expected = number_model::ToDouble(bytes, '.');
    bool ok = !expected.ok, narrowOk = !expected.ok;
    const double value = text.ToDouble(&ok);
    const float narrow = text.ToFloat(&narrowOk);
    Require(ok == expected.ok, "a text is a number exactly if strtod reads the whole normalised text");
    Require(areSame(value, expected.value), "a number is the one that strtod reads");
    Require(narrowOk == ok, "a text is a float exactly if it is a double");
    Require(areSame(narrow, static_cast<float>(expected.value)), "a float is the double, narrowed");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string bytes(Bytes(data + 1, size - 1));
    checkIntegers(bytes, data[0] >= 0x80 ? 10 : data[0] % 81);
    checkReal(bytes);
    return 0;
}
