// Replaces placeholders and formats numbers. The results must equal those of a second, simple implementation.

#include "Property.h"
#include "Text.h"

#include <charconv>
#include <climits>
#include <cmath>

namespace {

std::string substituted(const std::string& text, const std::string& argument) {
    for (char digit = '0'; digit <= '9'; ++digit) {
        const std::size_t place = text.find({'%', digit});
        if (place != text.npos) return text.substr(0, place) + argument + text.substr(place + 2);
    }
    return text + argument;
}

std::string padded(std::string digits, const checked_value<unsigned int>& width) {
    if (width.IsGiven() && digits.size() < width) digits.insert(0, width - digits.size(), '0');
    return digits;
}

template <typename T>
std::string digitsOf(T magnitude, unsigned int base) {
    char text[72];
    std::string digits(text, std::to_chars(text, text + sizeof text, magnitude, static_cast<int>(base)).ptr);
    for (char& c : digits) c = static_cast<char>(c >= 'a' ? c - 'a' + 'A' : c);
    return digits;
}

std::string formatted(int value, unsigned int base, const checked_value<unsigned int>& width) {
    if (base < 2 || base > 36) base = 10;
    if (value == INT_MIN && width.IsGiven()) {
        const std::string digits = digitsOf(2147483648U, base);
        return '-' + padded(digits.substr(0, digits.size() - 1), width) +
               padded(digits.substr(digits.size() - 1), width);
    }
    const unsigned int bits = static_cast<unsigned int>(value);
    return value < 0 ? '-' + padded(digitsOf(0U - bits, base), width) : padded(digitsOf(bits, base), width);
}

std::string formatted(double value, unsigned int precision, char letter) {
    if (!std::isfinite(value)) return {};
    const auto style = letter == 'e'   ? std::chars_format::scientific
                       : letter == 'g' ? std::chars_format::general
                                       : std::chars_format::fixed;
    char text[1200];
    const int digits = precision == UINT_MAX ? 6 : static_cast<int>(precision < 99 ? precision : 99);
    return {text, std::to_chars(text, text + sizeof text, value, style, digits).ptr};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const int value = input.ConsumeIntegral<int>();
    const unsigned int base = input.ConsumeIntegralInRange<unsigned int>(0, 40);
    checked_value<unsigned int> width;
    if (input.ConsumeBool()) width = input.ConsumeIntegralInRange<unsigned int>(0, 40);
    const double real = input.ConsumeFloatingPoint<double>();
    const unsigned int precision = input.ConsumeBool() ? UINT_MAX : input.ConsumeIntegral<std::uint8_t>();
    const char letter = input.PickValueInArray({'e', 'f', 'g', '?'});
    const std::string argument = input.ConsumeRandomLengthString(64);
    const std::string text = input.ConsumeRemainingBytesAsString();

    const String format = TextOf(text);
    RequireEqual(BytesOf(format.Arg(TextOf(argument))), substituted(text, argument),
                 "Arg replaces one placeholder");
    RequireEqual(BytesOf(format), text, "Arg does not change the format");

    RequireEqual(BytesOf(String::Number(value, base, width)), formatted(value, base, width),
                 "Number formats an int");
    const long long wide = static_cast<long long>(value) * base * 1000003;
    RequireEqual(BytesOf(String::Number(wide, 10)), std::to_string(wide), "Number formats a long long");
    const std::string shown = base == 16 ? padded(digitsOf(static_cast<unsigned int>(value), 16), width)
                                         : formatted(value, base, width);
    RequireEqual(BytesOf(format.Arg(value, base, width)), substituted(text, shown), "Arg formats an int");
    if (std::isfinite(real)) {
        RequireEqual(BytesOf(String::Number(real, precision, static_cast<unsigned int>(letter))),
                     formatted(real, precision, letter), "Number formats a double");
    }
    return 0;
}
