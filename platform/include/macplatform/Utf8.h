#pragma once

#include <cstddef>
#include <string_view>

namespace macplatform {

/// Returns the number of bytes of the UTF-8 character at the start of the text. Returns 0 if the text does
/// not begin with a valid character: the text is empty, a continuation byte is stray or missing, or the
/// sequence is overlong or encodes a surrogate or a value above U+10FFFF.
inline std::size_t Utf8CharacterLength(std::string_view text) {
    if (text.empty()) return 0;
    const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byteAt(0);
    if (lead < 0x80) return 1;
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    if (length == 0 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xC0) != 0x80) return 0;
    }
    const unsigned char second = byteAt(1);
    const bool isOverlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    const bool isSurrogate = lead == 0xED && second > 0x9F;
    const bool isAboveLimit = lead == 0xF4 && second > 0x8F;
    return isOverlong || isSurrogate || isAboveLimit ? 0 : length;
}

} // namespace macplatform
