#include "PropertyListXml.h"

#include "BinaryListWriter.h"
#include "PropertyListLimits.h"
#include "TextEncoding.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace macplatform {

namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; }

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = static_cast<char>(IsLetter(c) ? c | 0x20 : c);
    return lower;
}

std::string_view Stripped(std::string_view text) {
    while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
    return text;
}

/// What XML lets stand in a text.
bool IsXmlCharacter(std::uint32_t c) {
    if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
    return c < 0xD800 || (c >= 0xE000 && c != 0xFFFE && c != 0xFFFF && c <= 0x10FFFF);
}

bool IsXmlText(std::string_view bytes) {
    const bool hasControls = std::any_of(bytes.begin(), bytes.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && !IsXmlCharacter(static_cast<unsigned char>(c));
    });
    return !hasControls && IsUtf8(bytes) && bytes.find("\xEF\xBF\xBE") == bytes.npos &&
           bytes.find("\xEF\xBF\xBF") == bytes.npos;
}

// Scalars as objects of a binary list, from their texts; nothing when they are damaged.

/// Takes a sign off; true for minus.
bool TakeSign(std::string_view& text) {
    const bool isMinus = text.substr(0, 1) == "-";
    if (isMinus || text.substr(0, 1) == "+") text.remove_prefix(1);
    return isMinus;
}

std::optional<std::string> IntegerFrom(std::string_view text) {
    text = Stripped(text);
    const bool isMinus = TakeSign(text);
    const bool isHexadecimal = text.size() > 2 && text[0] == '0' && (text[1] | 0x20) == 'x';
    if (isHexadecimal) text.remove_prefix(2);
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value, isHexadecimal ? 16 : 10);
    constexpr std::uint64_t lowest = std::uint64_t{1} << 63;
    if (text.empty() || read.ec != std::errc() || read.ptr != end || (isMinus && value > lowest))
        return std::nullopt;
    return IntegerObject(value, isMinus && value > 0);
}

std::optional<std::string> RealFrom(std::string_view text) {
    text = Stripped(text);
    const bool isMinus = TakeSign(text);
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    const bool isNumber = !text.empty() && (IsDigit(text[0]) || text[0] == '.');
    const bool isWord = text == "nan" || text == "inf" || text == "infinity";
    if ((!isNumber && !isWord) || read.ec != std::errc() || read.ptr != end) return std::nullopt;
    return RealObject(isMinus && value != 0 ? -value : value); // the parser writes no negative zero
}

/// From 2001-01-01 to a day of the Gregorian calendar.
int DaysFrom2001(int year, int month, int day) {
    if (month < 3) {
        --year; // the day that leap years have more then ends a year
        month += 12;
    }
    year += 400; // a whole cycle of 146,097 days, lest a division have a negative number
    const int days = 365 * year + year / 4 - year / 100 + year / 400 + (153 * (month - 3) + 2) / 5 + day;
    constexpr int daysUntil2001 = 876889;
    return days - daysUntil2001;
}

std::optional<std::string> DateFrom(std::string_view text) {
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    text = Stripped(text);
    if (text.size() != form.size()) return std::nullopt;
    for (std::size_t i = 0; i < form.size(); ++i) {
        if (form[i] == '0' ? !IsDigit(text[i]) : text[i] != form[i]) return std::nullopt;
    }
    const auto number = [text](std::size_t at) { return (text[at] - '0') * 10 + (text[at + 1] - '0'); };
    const bool isDay = number(5) >= 1 && number(5) <= 12 && number(8) >= 1 && number(8) <= 31;
    if (!isDay || number(11) > 23 || number(14) > 59 || number(17) > 59) return std::nullopt;
    const int days = DaysFrom2001(number(0) * 100 + number(2), number(5), number(8));
    return DateObject(days * 86400.0 + number(11) * 3600 + number(14) * 60 + number(17));
}

/// The value of a digit of base 64; 64 for what is none.
unsigned Base64Value(char c) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    return static_cast<unsigned>(std::min(digits.find(c), digits.size()));
}

std::optional<std::string> DataFrom(std::string_view text) {
    std::string digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits), [](char c) { return !IsSpace(c); });
    const std::size_t count = std::min(digits.find('='), digits.size());
    const std::size_t padding = digits.size() - count;
    if (digits.size() % 4 != 0 || padding > 2 || (padding == 2 && digits.back() != '=')) return std::nullopt;
    std::string bytes;
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned value = Base64Value(digits[i]);
        if (value > 63) return std::nullopt;
        bits = bits << 6 | value;
        if (i % 4 != 0) bytes += static_cast<char>(bits >> (6 - 2 * (i % 4)) & 0xFF);
    }
    return DataObject(bytes);
}

std::optional<std::string> TextFrom(std::string_view text) { return TextObject(text); }

template <bool value>
std::optional<std::string> BooleanFrom(std::string_view text) {
    return text.empty() ? std::optional(BooleanObject(value)) : std::nullopt;
}

enum class Role { List, Dictionary, Array, Key, Scalar };
struct Element {
    std::string_view name;
    Role role;
    std::optional<std::string> (*object)(std::string_view); ///< Of its text; null for a container.
};
constexpr Element elements[] = {
    {"plist", Role::List, nullptr},
    {"dict", Role::Dictionary, nullptr},
    {"array", Role::Array, nullptr},
    {"key", Role::Key, TextFrom},
    {"string", Role::Scalar, TextFrom},
    {"integer", Role::Scalar, IntegerFrom},
    {"real", Role::Scalar, RealFrom},
    {"date", Role::Scalar, DateFrom},
    {"data", Role::Scalar, DataFrom},
    {"true", Role::Scalar, BooleanFrom<true>},
    {"false", Role::Scalar, BooleanFrom<false>},
};

/// One pass over the text, without recursion. Steps answer false when the text is damaged where they stand.
class XmlReader {
public:
    explicit XmlReader(const std::string& source) : xml(source), rest(source) {}

    bool Read() {
        Take("\xEF\xBB\xBF");
        if (!IsXmlText(rest) || !ReadDeclaration()) return false;
        while (!rest.empty()) {
            if (!ReadNext()) return false;
        }
        return open.empty() && hasRoot;
    }

    std::string Binary() const { return list.Bytes(root); }

    std::string Error() const {
        if (!reason.empty()) return reason;
        if (Stripped(xml).empty() || Stripped(xml).front() != '<') return "it is not a property list";
        const auto read = static_cast<std::ptrdiff_t>(xml.size() - rest.size());
        return "its XML is damaged in line " +
               std::to_string(1 + std::count(xml.begin(), xml.begin() + read, '\n'));
    }

private:
    struct Opened {
        const Element* element;
        std::vector<BinaryListWriter::Object> members; ///< Keys and values of a dictionary by turns.
        std::set<std::string> keys; ///< Of a dictionary: which of two would count, readers do not agree on.
    };

    bool Take(std::string_view token) {
        const bool isThere = rest.substr(0, token.size()) == token;
        if (isThere) rest.remove_prefix(token.size());
        return isThere;
    }

    /// What stands before the mark, which is taken too; nothing when there is no such mark.
    std::optional<std::string_view> TakeUntil(std::string_view mark) {
        const std::size_t end = rest.find(mark);
        if (end == rest.npos) return std::nullopt;
        const std::string_view before = rest.substr(0, end);
        rest.remove_prefix(end + mark.size());
        return before;
    }

    void SkipSpace() { rest.remove_prefix(rest.size() - StrippedFront(rest).size()); }
    static std::string_view StrippedFront(std::string_view text) {
        const auto first = std::find_if_not(text.begin(), text.end(), IsSpace);
        return text.substr(static_cast<std::size_t>(first - text.begin()));
    }

    std::string_view TakeName() {
        const auto end = std::find_if_not(rest.begin(), rest.end(), IsLetter);
        const std::string_view name = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
        rest.remove_prefix(name.size());
        return name;
    }

    /// ` NAME = "VALUE"`; nothing when that is not what follows.
    std::optional<std::string_view> TakeAttribute(std::string_view name) {
        const std::string_view before = rest;
        SkipSpace();
        if (rest.size() == before.size() || !Take(name)) return rest = before, std::nullopt;
        SkipSpace();
        if (!Take("=")) return rest = before, std::nullopt;
        SkipSpace();
        const std::string_view quote = rest.substr(0, 1);
        if (quote != "\"" && quote != "'") return rest = before, std::nullopt;
        rest.remove_prefix(1);
        const auto value = TakeUntil(quote);
        if (!value) rest = before;
        return value;
    }

    bool ReadDeclaration() {
        if (rest.substr(0, 5) != "<?xml" || rest.size() < 6 || !IsSpace(rest[5])) return true;
        rest.remove_prefix(5);
        if (TakeAttribute("version") != "1.0") return false;
        if (const auto encoding = TakeAttribute("encoding")) {
            if (LowerCase(*encoding) != "utf-8") {
                reason = "its XML is not in UTF-8";
                return false;
            }
        }
        if (const auto standalone = TakeAttribute("standalone");
            standalone && standalone != "yes" && standalone != "no")
            return false;
        SkipSpace();
        return Take("?>");
    }

    bool ReadNext() {
        if (rest.front() != '<') return ReadText();
        if (Take("<!--")) {
            const auto comment = TakeUntil("--");
            return comment && Take(">");
        }
        if (Take("<![CDATA[")) return ReadLiteralText();
        if (Take("<!DOCTYPE")) return ReadDocumentType();
        if (Take("<?")) return ReadInstruction();
        if (Take("</")) return ReadEnd();
        rest.remove_prefix(1);
        return ReadStart();
    }

    bool ReadInstruction() {
        const std::string_view target = TakeName();
        const auto behind = std::find_if_not(rest.begin(), rest.end(), [](char c) {
            return IsLetter(c) || IsDigit(c) || c == '-' || c == '_' || c == '.';
        });
        const bool isXml = LowerCase(target) == "xml" && behind == rest.begin();
        rest.remove_prefix(static_cast<std::size_t>(behind - rest.begin()));
        if (target.empty() || isXml || rest.empty() || (!IsSpace(rest.front()) && rest.substr(0, 2) != "?>"))
            return false;
        return TakeUntil("?>").has_value();
    }

    /// ` plist PUBLIC "..." "..."`, and no declarations.
    bool ReadDocumentType() {
        if (hasType || hasRoot || !open.empty() || rest.empty() || !IsSpace(rest[0])) return false;
        hasType = true;
        SkipSpace();
        if (!Take("plist")) return false;
        const bool isPublic = TakeSpaced("PUBLIC");
        if (isPublic && !TakeQuoted()) return false;
        if ((isPublic || TakeSpaced("SYSTEM")) && !TakeQuoted()) return false;
        SkipSpace();
        return Take(">");
    }

    bool TakeSpaced(std::string_view word) {
        const std::string_view before = rest;
        SkipSpace();
        if (rest.size() < before.size() && Take(word)) return true;
        rest = before;
        return false;
    }

    bool TakeQuoted() {
        const std::size_t room = rest.size();
        SkipSpace();
        if (rest.size() == room || !Take("\"")) return false;
        const auto text = TakeUntil("\"");
        return text && std::all_of(text->begin(), text->end(), [](char c) {
                   return IsLetter(c) || IsDigit(c) ||
                          std::string_view(" -'()+,./:=?;!*#@$_%").find(c) != std::string_view::npos;
               });
    }

    bool ReadStart() {
        const std::string_view name = TakeName();
        const auto* const element = std::find_if(std::begin(elements), std::end(elements),
                                                 [name](const Element& e) { return e.name == name; });
        if (element == std::end(elements) || !MayStand(element->role)) return false;
        if (element->role == Role::List) {
            const auto version = TakeAttribute("version");
            if (version && version->find_first_of("<&") != version->npos) return false;
        }
        SkipSpace();
        const bool isEmpty = Take("/");
        if (!Take(">")) return false;
        open.push_back({element, {}, {}});
        content.clear();
        if (open.size() > maxPropertyListDepth + 2 || ++count > maxPropertyListValues) {
            reason = count > maxPropertyListValues ? "it holds too many values" : "it is nested too deeply";
            return false;
        }
        return !isEmpty || Close();
    }

    /// Whether an element may come next: keys and values of a dictionary take turns.
    bool MayStand(Role role) {
        if (open.empty()) return !hasRoot && role != Role::Key && (hasRoot = true);
        const Opened& parent = open.back();
        switch (parent.element->role) {
        case Role::List:
            return parent.members.empty() && role != Role::List && role != Role::Key;
        case Role::Dictionary:
            return role != Role::List && (role == Role::Key) == (parent.members.size() % 2 == 0);
        case Role::Array:
            return role != Role::List && role != Role::Key;
        default:
            return false;
        }
    }

    bool ReadEnd() {
        if (open.empty() || TakeName() != open.back().element->name) return false;
        SkipSpace();
        return Take(">") && Close();
    }

    bool Close() {
        const Opened closed = std::move(open.back());
        open.pop_back();
        if (closed.element->role == Role::List) return closed.members.size() == 1;
        const auto object = closed.element->object ? Scalar(*closed.element) : Container(closed);
        if (!object) return false;
        if (open.empty()) {
            root = *object;
        } else {
            open.back().members.push_back(*object);
            if (open.back().element->role == Role::List) root = *object;
        }
        return true;
    }

    std::optional<BinaryListWriter::Object> Scalar(const Element& element) {
        const auto bytes = element.object(content);
        if (element.role == Role::Key) reason = KeyFault();
        if (!bytes || !reason.empty()) return std::nullopt;
        return list.Add(*bytes);
    }

    std::optional<BinaryListWriter::Object> Container(const Opened& closed) {
        if (closed.element->role == Role::Array) return list.AddContainer(BinaryKind::Array, closed.members);
        const std::size_t pairs = closed.members.size() / 2;
        if (closed.members.size() != 2 * pairs) return std::nullopt;
        std::vector<BinaryListWriter::Object> keysAndValues(closed.members.size());
        for (std::size_t i = 0; i < pairs; ++i) {
            keysAndValues[i] = closed.members[2 * i];
            keysAndValues[pairs + i] = closed.members[2 * i + 1];
        }
        return list.AddContainer(BinaryKind::Dictionary, keysAndValues);
    }

    /// Why the key that was read cannot stand in its dictionary; empty when it can.
    const char* KeyFault() {
        if (content.empty()) return "it has an empty key";
        return open.back().keys.insert(content).second ? "" : "a dictionary in it has the same key twice";
    }

    bool TakesText() const { return !open.empty() && open.back().element->object; }

    bool ReadLiteralText() {
        const auto literal = TakeUntil("]]>");
        if (!literal || !TakesText()) return false;
        AppendLines(*literal);
        return true;
    }

    /// With every kind of line end made one.
    void AppendLines(std::string_view lines) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (lines[i] != '\r') {
                content += lines[i];
            } else if (i + 1 == lines.size() || lines[i + 1] != '\n') {
                content += '\n';
            }
        }
    }

    bool ReadText() {
        std::string_view run = rest.substr(0, rest.find('<'));
        if (!TakesText()) {
            rest.remove_prefix(run.size());
            return Stripped(run).empty();
        }
        if (run.find("]]>") != run.npos) return false;
        const std::size_t plain = std::min(run.find('&'), run.size());
        AppendLines(run.substr(0, plain));
        rest.remove_prefix(plain);
        return plain == run.size() || ReadReference();
    }

    bool ReadReference() {
        constexpr std::string_view named[] = {"&lt;", "&gt;", "&amp;", "&apos;", "&quot;"};
        for (std::size_t i = 0; i < std::size(named); ++i) {
            if (Take(named[i])) return content += "<>&'\""[i], true;
        }
        if (!Take("&#")) return false;
        const bool isHexadecimal = Take("x");
        std::uint32_t character = 0;
        const auto read =
            std::from_chars(rest.data(), rest.data() + rest.size(), character, isHexadecimal ? 16 : 10);
        rest.remove_prefix(static_cast<std::size_t>(read.ptr - rest.data()));
        if (read.ec != std::errc() || !Take(";") || !IsXmlCharacter(character)) return false;
        content += Utf8Of(character);
        return true;
    }

    const std::string& xml;
    std::string_view rest;
    BinaryListWriter list;
    BinaryListWriter::Object root = 0;
    std::vector<Opened> open;
    std::string content; ///< Of the innermost element, as far as it is read.
    std::size_t count = 0;
    bool hasRoot = false, hasType = false;
    std::string reason;
};

} // namespace

std::string BinaryListFromXml(const std::string& xml, std::string& error) {
    XmlReader reader(xml);
    if (reader.Read()) return reader.Binary();
    error = reader.Error();
    return {};
}

} // namespace macplatform
