#include "DisplayText.h"

#include <macplatform/Utf8.h>

#include <array>
#include <charconv>

namespace xcodhost {

namespace {

std::string hexDigits(std::uint32_t value, int count) {
    std::string text;
    for (int place = count - 1; place >= 0; --place) text += "0123456789ABCDEF"[value >> (4 * place) & 15];
    return text;
}

/// Returns whether a terminal executes the character: U+0000 to U+001F and U+007F to U+009F.
bool isControl(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character[0]);
    return lead < 0x20 || lead == 0x7F || (lead == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0);
}

void appendEscaped(std::string& out, std::string_view bytes) {
    for (const char c : bytes) {
        switch (c) {
        case '\r': out += "\\r"; break;
        case '\n': out += "\\n"; break;
        case '\t': out += "\\t"; break;
        default: (out += "\\x") += hexDigits(static_cast<unsigned char>(c), 2);
        }
    }
}

} // namespace

std::string Printable(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = macplatform::Utf8CharacterLength(text);
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

std::string Join(const std::vector<std::string>& texts, std::string_view separator) {
    std::string joined;
    for (const std::string& text : texts) {
        if (&text != &texts.front()) joined += separator;
        joined += text;
    }
    return joined;
}

std::string ListText(const std::vector<std::string>& texts) {
    return texts.empty() ? "none" : Printable(Join(texts, ", "));
}

std::string Counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string Seconds(double seconds) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), seconds).ptr;
    return std::string(text.data(), end) + " s";
}

} // namespace xcodhost
