#include "XmlPlistTokenizer.h"

#include "PropertyValues.h"
#include "corefoundation/TextEncoding.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

namespace macplatform {

namespace {

constexpr char kSpaces[] = " \t\n\r";

/// Returns the character with the number "65" or "x41". Returns no value if there is no such character.
std::optional<char32_t> characterNumbered(std::string_view number) {
    const bool isHexadecimal = number.substr(0, 1) == "x";
    if (isHexadecimal) number.remove_prefix(1);
    std::uint32_t character = 0;
    const char* const end = number.data() + number.size();
    const auto read = std::from_chars(number.data(), end, character, isHexadecimal ? 16 : 10);
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    if (read.ec != std::errc() || read.ptr != end || isSurrogate || character > 0x10FFFF) return std::nullopt;
    return character;
}

/// Returns the character that "&name;" stands for.
std::optional<char32_t> characterNamed(std::string_view name) {
    if (name.substr(0, 1) == "#") return characterNumbered(name.substr(1));
    if (name == "lt") return '<';
    if (name == "gt") return '>';
    if (name == "amp") return '&';
    if (name == "apos") return '\'';
    if (name == "quot") return '"';
    return std::nullopt;
}

} // namespace

void XmlPlistTokenizer::SkipProlog() {
    for (SkipBetweenElements(); StartsWith("<!DOCTYPE"); SkipBetweenElements()) {
        const std::size_t end = text.find_first_of("[>", position);
        if (end == text.npos || text[end] == '[')
            Refuse("a document type with declarations is not supported");
        position = end + 1;
    }
}

void XmlPlistTokenizer::SkipBetweenElements() {
    for (SkipSpace(); StartsWith("<!--") || StartsWith("<?"); SkipSpace()) {
        if (StartsWith("<?")) {
            SkipConstruct(2, "?>", "processing instruction");
        } else {
            SkipConstruct(4, "-->", "comment");
        }
    }
}

XmlTag XmlPlistTokenizer::ReadStartTag() {
    if (!StartsWith("<"))
        Refuse(position == text.size() ? "the text ends too early" : "text outside of a string");
    const std::size_t begin = position;
    const std::string_view inside = SkipConstruct(1, ">", "tag");
    const bool isEmpty = !inside.empty() && inside.back() == '/';
    std::string_view name = inside.substr(0, inside.find_first_of(kSpaces));
    if (isEmpty && name.size() == inside.size()) name.remove_suffix(1);
    return {name, isEmpty, begin};
}

void XmlPlistTokenizer::ReadEndTag(std::string_view name) {
    const std::string expected = "</" + std::string(name);
    const bool isTag = StartsWith(expected);
    if (isTag) position += expected.size();
    if (isTag) SkipSpace();
    if (!isTag || !StartsWith(">")) Refuse("the tag " + expected + "> is missing");
    ++position;
}

std::string XmlPlistTokenizer::ReadText() {
    constexpr std::string_view literal = "<![CDATA[";
    std::string content;
    for (;;) {
        const std::size_t next = std::min(text.find_first_of("<&", position), text.size());
        content += text.substr(position, next - position);
        position = next;
        if (StartsWith("&")) {
            content += ReadReference();
        } else if (StartsWith(literal)) {
            content += SkipConstruct(literal.size(), "]]>", "CDATA section");
        } else {
            break;
        }
    }
    if (!IsUtf8(content)) Refuse("a string is not encoded in UTF-8");
    return content;
}

std::string_view XmlPlistTokenizer::ReadRawText() {
    const std::size_t begin = position;
    position = std::min(text.find('<', begin), text.size());
    return text.substr(begin, position - begin);
}

void XmlPlistTokenizer::Refuse(const std::string& reason) const {
    const auto lines = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), '\n');
    throw PropertyListError("line " + std::to_string(1 + lines) + ": " + reason);
}

void XmlPlistTokenizer::SkipSpace() {
    position = std::min(text.find_first_not_of(kSpaces, position), text.size());
}

std::string_view XmlPlistTokenizer::SkipConstruct(std::size_t open, std::string_view mark, const char* name) {
    const std::size_t begin = position + open;
    const std::size_t end = text.find(mark, begin);
    if (end == text.npos) Refuse(std::string("a ") + name + " is not closed");
    position = end + mark.size();
    return text.substr(begin, end - begin);
}

std::string XmlPlistTokenizer::ReadReference() {
    constexpr std::size_t longest = 32; // Longer than every valid reference without superfluous zeros.
    const std::string_view rest = text.substr(position + 1, longest);
    const auto character = characterNamed(rest.substr(0, rest.find(';')));
    if (!character || rest.find(';') == rest.npos) Refuse("unknown reference");
    position += rest.find(';') + 2;
    return Utf8Of(*character);
}

} // namespace macplatform
