#include "OldStylePlist.h"

#include "PropertyValues.h"
#include "XmlPlist.h"
#include "corefoundation/TextEncoding.h"

#include <algorithm>

namespace macplatform {

namespace {

using Kind = PropertyValue::Kind;

/// The characters 80 to FF of the encoding of the system for which the format was made.
constexpr char16_t kNextStep[] =
    u"\u00A0ÀÁÂÃÄÅÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖÙÚÛÜÝÞµ×÷©¡¢£⁄¥ƒ§¤’“«‹›ﬁﬂ®–†‡·¦¶•‚„”»…‰¬¿¹ˋ´ˆ˜¯˘˙¨²˚¸³˝˛ˇ—±¼½¾"
    u"àáâãäåçèéêëìÆíªîïðñŁØŒºòóôõöæùúûıüýłøœßþÿ\uFFFD\uFFFD";
static_assert(sizeof kNextStep == 129 * sizeof(char16_t), "every byte from 80 to FF has a character");

bool isBareCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("_$/:.-").find(c) != std::string_view::npos;
}

/// Returns the value of a hexadecimal digit, or -1 for any other character.
int digitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if ((c | 0x20) >= 'a' && (c | 0x20) <= 'f') return (c | 0x20) - 'a' + 10;
    return -1;
}

class OldStyleReader {
public:
    OldStyleReader(std::string_view source, std::size_t start) : text(source), position(start) {}

    PropertyValue Read() {
        const std::size_t start = position;
        SkipSpace();
        if (IsAtEnd()) return ContainerValue(Kind::kDictionary);
        PropertyValue root = ReadValue();
        SkipSpace();
        if (IsAtEnd()) return root;
        if (root.kind != Kind::kString) Refuse("text behind the value");
        position = start; // the dictionary counts instead of the string
        root = ReadEntries();
        if (!IsAtEnd()) Refuse("text behind the last entry");
        return root;
    }

private:
    bool IsAtEnd() const { return position >= text.size(); }
    char Next() const { return IsAtEnd() ? '\0' : text[position]; }
    bool StartsWith(std::string_view token) const { return text.substr(position, token.size()) == token; }

    [[noreturn]] void Refuse(const std::string& reason) const {
        const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(position, text.size()));
        throw PropertyListError("line " + std::to_string(1 + std::count(text.begin(), end, '\n')) + ": " +
                                reason);
    }

    void SkipPast(std::string_view mark) {
        const std::size_t found = text.find(mark, position);
        position = found == text.npos ? text.size() : found + mark.size();
    }

    /// Skips white space and comments.
    void SkipSpace() {
        for (;;) {
            position = std::min(text.find_first_not_of(" \t\n\v\f\r", position), text.size());
            if (StartsWith("//")) {
                position = std::min(text.find_first_of("\n\r", position), text.size());
            } else if (StartsWith("/*")) {
                position += 2;
                SkipPast("*/");
            } else {
                return;
            }
        }
    }

    void Expect(char mark) {
        SkipSpace();
        if (IsAtEnd() || Next() != mark) Refuse(std::string("'") + mark + "' is missing");
        ++position;
    }

    /// Counts a value against the limit.
    void Count() {
        if (++count > kMaxPropertyListValues) throw PropertyListError(kTooManyValues);
    }

    PropertyValue ReadValue() {
        SkipSpace();
        Count();
        switch (Next()) {
        case '{': return ReadContainer(&OldStyleReader::ReadEntries, '}');
        case '(': return ReadContainer(&OldStyleReader::ReadItems, ')');
        case '<': return ReadData();
        default: return StringValue(ReadString());
        }
    }

    PropertyValue ReadContainer(PropertyValue (OldStyleReader::*readContents)(), char end) {
        if (++depth > kMaxPropertyListDepth) throw PropertyListError(kTooDeep);
        ++position;
        PropertyValue container = (this->*readContents)();
        Expect(end);
        --depth;
        return container;
    }

    bool IsAtString() const { return Next() == '"' || Next() == '\'' || isBareCharacter(Next()); }

    /// Reads `key = value;` or `key;`, which has the key as its value, up to anything else.
    PropertyValue ReadEntries() {
        PropertyValue dictionary = ContainerValue(Kind::kDictionary);
        for (SkipSpace(); IsAtString(); SkipSpace()) {
            Count();
            dictionary.keys.push_back(ReadString());
            SkipSpace();
            if (Next() == '=') {
                ++position;
                dictionary.values.push_back(ReadValue());
            } else {
                dictionary.values.push_back(StringValue(dictionary.keys.back()));
            }
            Expect(';');
        }
        RemoveRepeatedKeys(dictionary, RepeatedKeys::kLastCounts);
        return dictionary;
    }

    /// Reads the items of an array. A comma may follow the last item.
    PropertyValue ReadItems() {
        PropertyValue array = ContainerValue(Kind::kArray);
        for (SkipSpace(); !IsAtEnd() && Next() != ')'; SkipSpace()) {
            array.items.push_back(ReadValue());
            SkipSpace();
            if (Next() != ',') break;
            ++position;
        }
        return array;
    }

    PropertyValue ReadData() {
        std::string bytes;
        for (++position; Next() != '>'; ++position) {
            if (std::string_view(" \t\n\r").find(Next()) != std::string_view::npos) continue;
            const int high = digitValue(Next());
            if (high < 0) Refuse("not a hexadecimal digit");
            ++position;
            const int low = digitValue(Next());
            if (low < 0) Refuse("half a byte of data");
            bytes += static_cast<char>(high << 4 | low);
        }
        ++position;
        return DataValue(bytes);
    }

    std::string ReadString() {
        if (!IsAtString()) Refuse("a value is missing");
        const char quote = Next();
        const std::size_t begin = position;
        if (!isBareCharacter(quote)) return ReadQuoted(quote);
        while (isBareCharacter(Next())) ++position;
        return std::string(text.substr(begin, position - begin));
    }

    std::string ReadQuoted(char quote) {
        const char marks[] = {quote, '\\', '\0'};
        std::u16string units;
        ++position;
        for (;;) {
            const std::size_t end = text.find_first_of(marks, position);
            if (end == text.npos) Refuse("a string is not closed");
            const std::string_view run = text.substr(position, end - position);
            if (!IsUtf8(run)) Refuse("a string is not encoded in UTF-8");
            // `DecodeUtf8` drops one byte order mark at the start.
            units += DecodeUtf8("\xEF\xBB\xBF" + std::string(run)).value_or(u"");
            position = end + 1;
            if (text[end] == quote) return StringValue(units).text;
            units += ReadEscape();
        }
    }

    char16_t ReadEscape() {
        constexpr std::string_view letters = "abfnrtv", controls = "\a\b\f\n\r\t\v";
        if (IsAtEnd()) Refuse("a string is not closed");
        const char c = Next();
        if (c >= '0' && c <= '7') return ReadOctal();
        if (static_cast<unsigned char>(c) >= 0x80) Refuse("an escaped character that is not ASCII");
        ++position;
        if (c == 'U') return ReadUnicode();
        const std::size_t control = letters.find(c);
        return static_cast<char16_t>(control == letters.npos ? c : controls[control]);
    }

    char16_t ReadOctal() {
        unsigned byte = 0;
        for (int i = 0; i < 3 && Next() >= '0' && Next() <= '7'; ++i) {
            byte = byte << 3 | static_cast<unsigned>(Next() - '0');
            ++position;
        }
        byte &= 0xFF;
        return byte < 0x80 ? static_cast<char16_t>(byte) : kNextStep[byte - 0x80];
    }

    char16_t ReadUnicode() {
        unsigned unit = 0;
        for (int i = 0; i < 4 && digitValue(Next()) >= 0; ++i) {
            unit = unit << 4 | static_cast<unsigned>(digitValue(Next()));
            ++position;
        }
        return static_cast<char16_t>(unit);
    }

    std::string_view text;
    std::size_t position;
    std::size_t count = 0;
    unsigned depth = 0;
};

/// Returns data, which is in hexadecimal, in base 64.
std::string base64Of(const std::string& hexadecimal) {
    constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < hexadecimal.size(); i += 6) {
        const std::string group = hexadecimal.substr(i, 6);
        unsigned bits = 0;
        for (std::size_t j = 0; j < 6; ++j)
            bits = bits << 4 | (j < group.size() ? static_cast<unsigned>(digitValue(group[j])) : 0);
        for (unsigned j = 0; j < 4; ++j) {
            const bool isPadding = j > group.size() / 2;
            text += isPadding ? '=' : digits[bits >> (18 - 6 * j) & 63];
        }
    }
    return text;
}

void appendXml(std::string& xml, const PropertyValue& value) {
    if (value.kind == Kind::kString) {
        xml += XmlElement(value);
        return;
    }
    if (value.kind == Kind::kData) {
        xml += "<data>" + base64Of(value.text) + "</data>";
        return;
    }
    const std::string name = value.KindName();
    xml += '<' + name + '>';
    for (const PropertyValue& item : value.items) {
        xml += '\n';
        appendXml(xml, item);
    }
    for (std::size_t i = 0; i < value.keys.size(); ++i) {
        xml += '\n' + XmlKeyElement(value.keys[i]) + '\n';
        appendXml(xml, value.values[i]);
    }
    xml += "\n</" + name + '>';
}

} // namespace

PropertyValue ReadOldStylePlist(std::string_view text, std::size_t start) {
    return OldStyleReader(text, start).Read();
}

std::string XmlFromOldStyle(const PropertyValue& root) {
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n";
    appendXml(xml, root);
    return xml + "\n</plist>\n";
}

} // namespace macplatform
