#pragma once

/// Text in the encodings that strings are made of and read in, both ways.

#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

/// Strict, as the Mac decodes: overlong forms, surrogates, values above U+10FFFF, stray and missing
/// continuation bytes refuse the whole text. Two old habits of the Mac are kept: a byte order mark at the
/// very start is dropped, and a lone byte A9 is U+FFFD.
std::optional<std::u16string> DecodeUtf8(std::string_view bytes);
/// Strict without those habits: what a file that says UTF-8 must be.
bool IsUtf8(std::string_view bytes);
/// Every byte has a character.
std::u16string DecodeMacRoman(std::string_view bytes);
/// A byte of 0x80 and above is the character of the same number.
std::u16string DecodeAscii(std::string_view bytes);

/// One character, which must not be a surrogate.
std::string Utf8Of(char32_t character);
/// Nothing when a surrogate stands alone.
std::optional<std::string> EncodeUtf8(std::u16string_view units);
/// Nothing when a character has no byte. A letter and the combining mark behind it are one character where
/// Mac Roman has it so.
std::optional<std::string> EncodeMacRoman(std::u16string_view units);
std::optional<std::string> EncodeAscii(std::u16string_view units);

/// UTF-8 for people: a lone surrogate becomes U+FFFD.
std::string ReadableUtf8(std::u16string_view units);

} // namespace macplatform
