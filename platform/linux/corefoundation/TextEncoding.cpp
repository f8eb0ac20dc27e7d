#include "TextEncoding.h"

#include <macplatform/PropertyList.h> // EscapeSurrogates
#include <macplatform/Utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

namespace macplatform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// The characters of the bytes 0x80 to 0xFF.
constexpr char16_t kMacRoman[] = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5,
    0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, 0x00F2, 0x00F4,
    0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6,
    0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, 0x221E, 0x00B1, 0x2264, 0x2265,
    0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF,
    0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, 0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5,
    0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044,
    0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9,
    0x0131, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7};
static_assert(std::size(kMacRoman) == 128);

/// The composed characters of Mac Roman with one combining mark. `composed` has one character for each
/// element of `bases`.
struct Composition {
    char16_t mark;
    std::u16string_view bases;
    std::u16string_view composed;
};
constexpr Composition kCompositions[] = {
    // mark, bases, composed
    {0x0300, u"AEIOUaeiou", u"\u00C0\u00C8\u00CC\u00D2\u00D9\u00E0\u00E8\u00EC\u00F2\u00F9"},
    {0x0301, u"AEIOUaeiou", u"\u00C1\u00C9\u00CD\u00D3\u00DA\u00E1\u00E9\u00ED\u00F3\u00FA"},
    {0x0302, u"AEIOUaeiou", u"\u00C2\u00CA\u00CE\u00D4\u00DB\u00E2\u00EA\u00EE\u00F4\u00FB"},
    {0x0303, u"ANOano", u"\u00C3\u00D1\u00D5\u00E3\u00F1\u00F5"},
    {0x0308, u"AEIOUYaeiouy", u"\u00C4\u00CB\u00CF\u00D6\u00DC\u0178\u00E4\u00EB\u00EF\u00F6\u00FC\u00FF"},
    {0x030A, u"Aa", u"\u00C5\u00E5"},
    {0x0327, u"Cc", u"\u00C7\u00E7"},
};

/// Decodes the UTF-8 sequence of two or more bytes at the start of `bytes` and removes the sequence from
/// `bytes`. If the sequence is not valid, returns no value and does not change `bytes`.
std::optional<char32_t> decodeSequence(std::string_view& bytes) {
    const auto byteAt = [&bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const std::size_t length = Utf8CharacterLength(bytes);
    if (length < 2) return std::nullopt;
    char32_t character = byteAt(0) & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) character = (character << 6) | (byteAt(i) & 0x3FU);
    bytes.remove_prefix(length);
    return character;
}

void appendUtf16(std::u16string& units, char32_t character) {
    if (character < 0x10000) {
        units += static_cast<char16_t>(character);
    } else {
        units += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
        units += static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
    }
}

void appendUtf8(std::string& bytes, char32_t character) {
    const auto append = [&bytes](char32_t byte) { bytes += static_cast<char>(byte); };
    if (character < 0x80) return append(character);
    if (character < 0x800) {
        append(0xC0 | (character >> 6));
    } else {
        if (character < 0x10000) {
            append(0xE0 | (character >> 12));
        } else {
            append(0xF0 | (character >> 18));
            append(0x80 | ((character >> 12) & 0x3F));
        }
        append(0x80 | ((character >> 6) & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

/// Decodes the character at the start of `units` and removes the character from `units`. For an unpaired
/// surrogate, removes one unit and returns no value.
std::optional<char32_t> decodeCharacter(std::u16string_view& units) {
    const char16_t first = units.front();
    units.remove_prefix(1);
    if ((first & 0xF800) != 0xD800) return first;
    if (first >= 0xDC00 || units.empty() || (units.front() & 0xFC00) != 0xDC00) return std::nullopt;
    const char16_t second = units.front();
    units.remove_prefix(1);
    return 0x10000 + ((char32_t{first} & 0x3FF) << 10) + (char32_t{second} & 0x3FF);
}

/// Returns the composed character of a base and a combining mark. Returns 0 if Mac Roman has no such
/// character.
char16_t compose(char16_t base, char16_t mark) {
    for (const Composition& composition : kCompositions) {
        if (composition.mark != mark) continue;
        const std::size_t place = composition.bases.find(base);
        return place == std::u16string_view::npos ? char16_t{0} : composition.composed[place];
    }
    return 0;
}

std::optional<char> macRomanByte(char16_t unit) {
    constexpr char16_t ohmSign = 0x2126;
    constexpr char16_t greekOmega = 0x03A9;
    if (unit < 0x80) return static_cast<char>(unit);
    const auto* place =
        std::find(std::begin(kMacRoman), std::end(kMacRoman), unit == ohmSign ? greekOmega : unit);
    if (place == std::end(kMacRoman)) return std::nullopt;
    return static_cast<char>(0x80 + (place - std::begin(kMacRoman)));
}

} // namespace

std::optional<std::u16string> DecodeUtf8(std::string_view bytes) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (bytes.substr(0, byteOrderMark.size()) == byteOrderMark) bytes.remove_prefix(byteOrderMark.size());
    std::u16string units;
    units.reserve(bytes.size());
    while (!bytes.empty()) {
        const auto lead = static_cast<unsigned char>(bytes.front());
        if (lead < 0x80 || lead == 0xA9) {
            units += lead < 0x80 ? char16_t{lead} : static_cast<char16_t>(kReplacement);
            bytes.remove_prefix(1);
        } else if (const auto character = decodeSequence(bytes)) {
            appendUtf16(units, *character);
        } else {
            return std::nullopt;
        }
    }
    return units;
}

bool IsUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        if (static_cast<unsigned char>(bytes.front()) < 0x80) {
            bytes.remove_prefix(1);
        } else if (!decodeSequence(bytes)) {
            return false;
        }
    }
    return true;
}

std::u16string DecodeMacRoman(std::string_view bytes) {
    std::u16string units;
    units.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        units += byte < 0x80 ? char16_t{byte} : kMacRoman[byte - 0x80];
    }
    return units;
}

std::u16string DecodeAscii(std::string_view bytes) {
    std::u16string units;
    units.reserve(bytes.size());
    for (const char c : bytes) units += char16_t{static_cast<unsigned char>(c)};
    return units;
}

std::string Utf8Of(char32_t character) {
    std::string bytes;
    appendUtf8(bytes, character);
    return bytes;
}

std::optional<std::string> EncodeUtf8(std::u16string_view units) {
    std::string bytes;
    bytes.reserve(units.size());
    while (!units.empty()) {
        const auto character = decodeCharacter(units);
        if (!character) return std::nullopt;
        appendUtf8(bytes, *character);
    }
    return bytes;
}

std::string Utf8WithSurrogates(std::u16string_view units) {
    std::string bytes;
    bytes.reserve(units.size());
    while (!units.empty()) {
        const char16_t first = units.front();
        appendUtf8(bytes, decodeCharacter(units).value_or(first));
    }
    return bytes;
}

std::string EscapeSurrogates(const std::string& text) {
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = [&text, i](std::size_t at) { return static_cast<unsigned char>(text[i + at]); };
        const bool isSurrogate = byte(0) == 0xED && i + 2 < text.size() && byte(1) >= 0xA0;
        if (!isSurrogate) {
            escaped += text[i];
            continue;
        }
        char unit[8];
        const unsigned surrogate = 0xD000U | (byte(1) & 0x3FU) << 6 | (byte(2) & 0x3FU);
        static_cast<void>(std::snprintf(unit, sizeof unit, "\\u%04X", surrogate));
        escaped += unit;
        i += 2;
    }
    return escaped;
}

std::string ReadableUtf8(std::u16string_view units) {
    std::string bytes;
    bytes.reserve(units.size());
    while (!units.empty()) appendUtf8(bytes, decodeCharacter(units).value_or(kReplacement));
    return bytes;
}

std::optional<std::string> EncodeMacRoman(std::u16string_view units) {
    std::string bytes;
    bytes.reserve(units.size());
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t composed = i + 1 < units.size() ? compose(units[i], units[i + 1]) : char16_t{0};
        const auto byte = macRomanByte(composed ? composed : units[i]);
        if (!byte) return std::nullopt;
        bytes += *byte;
        if (composed) ++i;
    }
    return bytes;
}

std::optional<std::string> EncodeAscii(std::u16string_view units) {
    if (std::any_of(units.begin(), units.end(), [](char16_t unit) { return unit >= 0x80; }))
        return std::nullopt;
    return std::string(units.begin(), units.end());
}

} // namespace macplatform
