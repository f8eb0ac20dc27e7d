#pragma once

/// Declares conversions between UTF-16 (the encoding of CF strings) and UTF-8, Mac Roman and ASCII.

#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

/// Decodes UTF-8 as the Mac does. Returns no value if the text contains an overlong sequence, a surrogate, a
/// value above U+10FFFF, or a stray or missing continuation byte. There are two exceptions, as on the Mac: a
/// byte order mark at the start is removed, and a stray byte A9 becomes U+FFFD.
std::optional<std::u16string> DecodeUtf8(std::string_view bytes);
/// Returns whether the bytes are valid UTF-8, without the two exceptions of `DecodeUtf8`. A file that
/// declares UTF-8 must pass this check.
bool IsUtf8(std::string_view bytes);
/// Decodes Mac Roman. Every byte is a valid character.
std::u16string DecodeMacRoman(std::string_view bytes);
/// Decodes ASCII. A byte of 0x80 or above becomes the character with the same number.
std::u16string DecodeAscii(std::string_view bytes);

/// Encodes one character as UTF-8. The character must not be a surrogate.
std::string Utf8Of(char32_t character);
/// Encodes UTF-8. Returns no value if the text contains an unpaired surrogate.
std::optional<std::string> EncodeUtf8(std::u16string_view units);
/// Encodes Mac Roman. Returns no value if a character is not in Mac Roman. A letter and the combining mark
/// after it become one byte if Mac Roman has the composed character.
std::optional<std::string> EncodeMacRoman(std::u16string_view units);
/// Encodes ASCII. Returns no value if a character is not ASCII.
std::optional<std::string> EncodeAscii(std::u16string_view units);

/// Encodes UTF-8, and an unpaired surrogate like any other character of three bytes.
std::string Utf8WithSurrogates(std::u16string_view units);
/// Encodes UTF-8 for display. An unpaired surrogate becomes U+FFFD.
std::string ReadableUtf8(std::u16string_view units);

} // namespace macplatform
