// Conversions between UTF-8, UTF-16 and Mac Roman against the C library's own.

#include "Property.h"
#include "Text.h"

#include <cerrno>
#include <cstring>
#include <iconv.h>
#include <optional>
#include <vector>

namespace {

/// One direction of the C library's conversion, strict.
class Conversion {
public:
    Conversion(const char* to, const char* from) : state(iconv_open(to, from)) {
        Require(state != reinterpret_cast<iconv_t>(-1), "the C library knows the encoding");
    }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;
    ~Conversion() { iconv_close(state); }

    /// What could be converted; `rest` is what could not.
    std::string Convert(std::string bytes, std::string& rest) {
        iconv(state, nullptr, nullptr, nullptr, nullptr);
        std::string out(bytes.size() * 4 + 8, '\0');
        char* from = bytes.data();
        char* to = out.data();
        std::size_t left = bytes.size(), space = out.size();
        iconv(state, &from, &left, &to, &space);
        rest.assign(from, left);
        out.resize(out.size() - space);
        return out;
    }

private:
    iconv_t state;
};

std::vector<unsigned short> unitsOf(const std::string& littleEndian) {
    std::vector<unsigned short> units(littleEndian.size() / 2);
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<unsigned short>(static_cast<unsigned char>(littleEndian[2 * i]) |
                                               static_cast<unsigned char>(littleEndian[2 * i + 1]) << 8);
    }
    return units;
}

/// UTF-8 as the Mac reads it: the C library's way, without a first byte order mark, and with a stray A9 as
/// U+FFFD.
std::optional<std::string> utf16Of(std::string bytes) {
    static Conversion gConversion("UTF-16LE", "UTF-8");
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) bytes.erase(0, 3);
    std::string units, rest;
    for (;;) {
        units += gConversion.Convert(bytes, rest);
        if (rest.empty()) return units;
        if (rest.front() != '\xA9') return std::nullopt;
        units += "\xFD\xFF";
        bytes = rest.substr(1);
    }
}

void checkBytes(const std::string& bytes) {
    const std::string read(BeforeNul(bytes));
    const auto expected = utf16Of(read);
    const shared_array<unsigned short> seen = TextOf(bytes).Unicode(1);
    Require(static_cast<bool>(seen) == expected.has_value(), "UTF-8 is taken exactly when it is valid");
    if (!expected) return;
    const std::vector<unsigned short> units = unitsOf(*expected);
    for (std::size_t i = 0; i < units.size(); ++i) Require(seen[i] == units[i], "the same UTF-16");
    Require(seen[units.size()] == 0, "ended by a 0");
}

void checkUnits(const std::string& bytes) {
    static Conversion gConversion("UTF-8", "UTF-16LE");
    std::vector<unsigned short> units = unitsOf(bytes);
    units.push_back(0);
    std::size_t count = 0;
    while (units[count] != 0) ++count;
    std::string rest;
    const std::string expected = gConversion.Convert(bytes.substr(0, 2 * count), rest);
    const String text(units.data(), 1);
    RequireEqual(BytesOf(text), rest.empty() ? expected : "", "UTF-16 to UTF-8, or nothing from half a pair");

    const String roman(units.data(), 2);
    if (roman.GetLength() == 0) return;
    Require(roman.GetLength() <= count, "a byte of Mac Roman for each unit, or for two that compose");
    const shared_array<unsigned short> again = roman.Unicode(2);
    RequireEqual(BytesOf(String(again.get(), 2)), BytesOf(roman), "Mac Roman goes there and back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(Bytes(data, size));
    checkBytes(bytes);
    checkUnits(bytes);
    return 0;
}
