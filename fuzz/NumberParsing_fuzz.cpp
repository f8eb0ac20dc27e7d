// Number parsing against a second implementation that collects digits without a limit and looks at ranges
// last.

#include "Property.h"
#include "Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace {

bool IsSpace(char c) { return std::strchr(" \t\n\v\f\r\xA0", c) && c; }

std::string Stripped(std::string text) {
    while (!text.empty() && IsSpace(text.front())) text.erase(0, 1);
    while (!text.empty() && IsSpace(text.back())) text.pop_back();
    return text;
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
}

/// Nothing where the bytes are no UTF-8. What stands behind a NUL is lost when the text goes through UTF-16.
std::optional<std::string> Normalized(std::string text) {
    text = Stripped(text);
    ReplaceAll(text, ",", ".");
    if (std::all_of(text.begin(), text.end(), [](char c) { return c >= 0; })) return text;
    const shared_array<unsigned short> units = TextOf(text).Unicode(1);
    if (!units) return std::nullopt;
    text = BytesOf(String(units.get(), 1));
    const char fullWidthZero[] = "\uFF10";
    for (char digit = 0; digit <= 9; ++digit) {
        std::string wide = fullWidthZero;
        wide.back() = static_cast<char>(wide.back() + digit);
        ReplaceAll(text, wide, std::string(1, static_cast<char>('0' + digit)));
    }
    for (const char* point : {"\uFF0E", "\u3002"}) ReplaceAll(text, point, ".");
    for (const char* minus : {"\uFF0D", "\u2212"}) ReplaceAll(text, minus, "-");
    return text;
}

struct Magnitude {
    bool minus = false;
    unsigned __int128 value = 0; ///< At most 2^64, which stands for all above.
};

unsigned int DigitOf(char c) {
    if (c >= '0' && c <= '9') return static_cast<unsigned int>(c - '0');
    if (c >= 'a' && c <= 'z') return static_cast<unsigned int>(c - 'a' + 10);
    if (c >= 'A' && c <= 'Z') return static_cast<unsigned int>(c - 'A' + 10);
    return 99;
}

std::optional<Magnitude> MagnitudeOf(const std::string& text, unsigned int base) {
    const auto normalized = Normalized(text);
    if (!normalized || base > 36) return std::nullopt;
    std::string digits = Stripped(*normalized);
    Magnitude result;
    if (!digits.empty() && (digits[0] == '-' || digits[0] == '+')) {
        result.minus = digits[0] == '-';
        digits.erase(0, 1);
    }
    if (digits.empty()) return std::nullopt;
    constexpr auto limit = static_cast<unsigned __int128>(1) << 64;
    for (const char c : digits) {
        if (DigitOf(c) >= base) return std::nullopt;
        result.value = std::min(result.value * base + DigitOf(c), limit);
    }
    return result;
}

std::string Shown(bool ok, long long value) {
    return ok ? "read " + std::to_string(value) : "failed " + std::to_string(value);
}

template <typename Read>
void Check(Read read, bool good, long long value, const char* claim) {
    bool ok = !good;
    const auto seen = static_cast<long long>(read(&ok));
    RequireEqual(Shown(ok, seen), Shown(good, good ? value : 0), claim);
}

void CheckIntegers(const std::string& bytes, unsigned int base) {
    const String text = TextOf(bytes);
    const auto read = MagnitudeOf(bytes, base);
    const Magnitude magnitude = read.value_or(Magnitude());
    const auto low = static_cast<unsigned long long>(magnitude.value);
    const auto signedLow = static_cast<long long>(magnitude.minus ? 0 - low : low);
    const bool unsign = read && !(magnitude.minus);
    const auto upTo = [&](unsigned long long most) { return read && magnitude.value <= most; };

    Check([&](bool* ok) { return text.ToInt(ok, base); }, upTo(2147483647ULL + (magnitude.minus ? 1 : 0)),
          signedLow, "ToInt");
    Check([&](bool* ok) { return text.ToShort(ok, base); }, upTo(magnitude.minus ? 65535 : 32767),
          static_cast<short>(signedLow), "ToShort");
    Check([&](bool* ok) { return text.ToInt64(ok, base); }, upTo(magnitude.minus ? 0 : 4294967295ULL),
          static_cast<int>(low), "ToInt64");
    Check([&](bool* ok) { return text.ToUInt(ok, base); }, unsign && upTo(4294967295ULL), signedLow,
          "ToUInt");
    Check([&](bool* ok) { return text.ToUShort(ok, base); }, unsign && upTo(65535), signedLow, "ToUShort");
    Check([&](bool* ok) { return text.ToUInt64(ok, base); },
          unsign && upTo(std::numeric_limits<unsigned long long>::max()), signedLow, "ToUInt64");
}

void CheckReal(const std::string& bytes) {
    const String text = TextOf(bytes);
    bool ok = false, narrowOk = false;
    const double value = text.ToDouble(&ok);
    const float narrow = text.ToFloat(&narrowOk);
    Require(ok == narrowOk && (std::isnan(value) ? std::isnan(narrow) : narrow == static_cast<float>(value)),
            "a float is the double, narrowed");
    Require(ok || value == 0, "what cannot be read is 0");
    const std::string normalized = Normalized(bytes).value_or("");
    double expected = 0;
    const char* const end = normalized.data() + normalized.size();
    const auto read = std::from_chars(normalized.data(), end, expected);
    if (read.ec == std::errc() && read.ptr == end && !normalized.empty()) {
        Require(ok && (std::isnan(expected) ? std::isnan(value) : value == expected),
                "a decimal number reads as it is");
    }
    if (ok)
        Require(normalized.find_first_not_of("0123456789+-.abcdefinptxyABCDEFINPTXY()_ \t\n\v\f\r") ==
                        normalized.npos ||
                    std::isnan(value),
                "a number has no other characters");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string bytes(Bytes(data + 1, size - 1));
    CheckIntegers(bytes, data[0] >= 0x80 ? 10 : data[0] % 40);
    CheckReal(bytes);
    return 0;
}
