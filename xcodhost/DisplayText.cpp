#include "DisplayText.h"

#include <array>
#include <charconv>

namespace xcodhost {

namespace {

std::string hexDigits(std::uint32_t value, int count) {
    std::string text;
    for (int place = count - 1; place >= 0; --place) text += "0123456789ABCDEF"[value >> (4 * place) & 15];
    return text;
}

/// Returns the number of bytes of the UTF-8 character at the start of `text`, or 0 if it is malformed. `text`
/// must not be empty.
std::size_t characterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) return 1;
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    const unsigned char second = byte(1);
    const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    const bool outside = (lead == 0xED && second > 0x9F) || (lead == 0xF4 && second > 0x8F);
    return overlong || outside ? 0 : length;
}

/// Returns whether a terminal executes the character: U+0000 to U+001F and U+007F to U+009F.
bool isControl(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character[0]);
    return lead < 0x20 || lead == 0x7F || (lead == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0);
}

void appendEscaped(std::string& out, std::string_view bytes) {
    for (const char c : bytes) {
        switch (c) {
        case '\r':
            out += "\\r";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            (out += "\\x") += hexDigits(static_cast<unsigned char>(c), 2);
        }
    }
}

} // namespace

std::string Printable(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        const std::string_view character = text.substr(0, length == 0 ? 1 : length);
        if (length == 0 || isControl(character)) {
            appendEscaped(out, character);
        } else {
            out += character;
        }
        text.remove_prefix(character.size());
    }
    return out;
}

std::string PrintableQuoted(std::string_view text) { return '"' + Printable(text) + '"'; }

std::string Hex(std::uint32_t value, int digits) { return "0x" + hexDigits(value, digits); }

std::string Counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string Seconds(double seconds) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), seconds).ptr;
    return std::string(text.data(), end) + " s";
}

} // namespace xcodhost
