// Converts strings between UTF-8, UTF-16 and Mac Roman. The results must equal those of the C library.

#include "Property.h"
#include "Text.h"

#include <cerrno>
#include <cstring>
#include <iconv.h>
#include <optional>
#include <vector>

namespace {

/// A conversion by the C library from one encoding to another, which stops at invalid input.
class Conversion {
public:
    Conversion(const char* to, const char* from) : state(iconv_open(to, from)) {
        Require(state != reinterpret_cast<iconv_t>(-1), "the C library supports the encoding");
    }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;
    ~Conversion() { iconv_close(state); }

    /// Returns the converted bytes. `rest` receives the input from the first invalid byte on.
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

/// Converts UTF-8 as the Mac does. The Mac differs from the C library in two cases: it drops a byte order
/// mark at the start, and it converts a stray byte A9 to U+FFFD. Returns no value for invalid input.
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
    Require(static_cast<bool>(seen) == expected.has_value(), "UTF-8 is accepted exactly if it is valid");
    if (!expected) return;
    const std::vector<unsigned short> units = unitsOf(*expected);
    for (std::size_t i = 0; i < units.size(); ++i)
        Require(seen[i] == units[i], "the UTF-16 units are those of the C library");
    Require(seen[units.size()] == 0, "the UTF-16 units end with a 0");
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
    RequireEqual(BytesOf(text), rest.empty() ? expected : "",
                 "UTF-16 is converted to UTF-8, or to an empty string if it is invalid");

    const String roman(units.data(), 2);
    if (roman.GetLength() == 0) return;
    Require(roman.GetLength() <= count, "Mac Roman has at most one byte per unit");
    const shared_array<unsigned short> again = roman.Unicode(2);
    RequireEqual(BytesOf(String(again.get(), 2)), BytesOf(roman),
                 "Mac Roman does not change on the way to UTF-16 and back");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(Bytes(data, size));
    checkBytes(bytes);
    checkUnits(bytes);
    return 0;
}
