#include "PropertyListXml.h"

#include "BinaryPlistWriter.h"
#include "PropertyListLimits.h"
#include "XmlCharacters.h"
#include "XmlScalars.h"
#include "corefoundation/TextEncoding.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace macplatform {

namespace {

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = static_cast<char>(IsLetter(c) ? c | 0x20 : c);
    return lower;
}

/// Returns whether XML allows the code point in a document.
bool isXmlCharacter(std::uint32_t c) {
    if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
    return c < 0xD800 || (c >= 0xE000 && c != 0xFFFE && c != 0xFFFF && c <= 0x10FFFF);
}

bool isXmlText(std::string_view bytes) {
    const bool hasControls = std::any_of(bytes.begin(), bytes.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && !isXmlCharacter(static_cast<unsigned char>(c));
    });
    return !hasControls && IsUtf8(bytes) && bytes.find("\xEF\xBF\xBE") == bytes.npos &&
           bytes.find("\xEF\xBF\xBF") == bytes.npos;
}

enum class Role { kPropertyList, kDictionary, kArray, kKey, kScalar };
struct Element {
    std::string_view name;
    Role role;
    /// Returns the object for the text of the element, or no value if the text is invalid.
    /// Null for a container.
    std::optional<std::string> (*object)(std::string_view);
};
constexpr Element kElements[] = {
    {"plist", Role::kPropertyList, nullptr}, {"dict", Role::kDictionary, nullptr},
    {"array", Role::kArray, nullptr},        {"key", Role::kKey, StringFrom},
    {"string", Role::kScalar, StringFrom},   {"integer", Role::kScalar, IntegerFrom},
    {"real", Role::kScalar, RealFrom},       {"date", Role::kScalar, DateFrom},
    {"data", Role::kScalar, DataFrom},       {"true", Role::kScalar, TrueFrom},
    {"false", Role::kScalar, FalseFrom},
};

/// Reads the XML in one pass, without recursion. Every `Read` function returns false if the XML is damaged at
/// the current position.
class XmlReader {
public:
    explicit XmlReader(const std::string& source) : xml(source), rest(source) {}

    bool Read() {
        Accept("\xEF\xBB\xBF");
        if (!isXmlText(rest) || !ReadDeclaration()) return false;
        while (!rest.empty()) {
            if (!ReadNext()) return false;
        }
        return open.empty() && hasRoot;
    }

    std::string Binary() const { return writer.Bytes(root); }

    std::string Error() const {
        if (!reason.empty()) return reason;
        if (Stripped(xml).empty() || Stripped(xml).front() != '<') return "not a property list";
        const auto read = static_cast<std::ptrdiff_t>(xml.size() - rest.size());
        return "the XML is damaged in line " +
               std::to_string(1 + std::count(xml.begin(), xml.begin() + read, '\n'));
    }

private:
    struct Opened {
        const Element* element;
        std::vector<BinaryPlistWriter::Object> members; ///< In a dictionary, keys and values alternate.
        std::set<std::string> keys; ///< The keys of a dictionary. Readers treat equal keys differently.
    };

    bool Accept(std::string_view token) {
        const bool isThere = rest.substr(0, token.size()) == token;
        if (isThere) rest.remove_prefix(token.size());
        return isThere;
    }

    /// Returns the text before the mark, and skips the text and the mark.
    /// Returns no value if the mark is missing.
    std::optional<std::string_view> ReadUntil(std::string_view mark) {
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

    std::string_view ParseName() {
        const auto end = std::find_if_not(rest.begin(), rest.end(), IsLetter);
        const std::string_view name = rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
        rest.remove_prefix(name.size());
        return name;
    }

    /// Reads ` NAME = "VALUE"` and returns the value. Returns no value, and skips nothing, if the attribute
    /// does not follow.
    std::optional<std::string_view> ParseAttribute(std::string_view name) {
        const std::string_view before = rest;
        SkipSpace();
        if (rest.size() == before.size() || !Accept(name)) return rest = before, std::nullopt;
        SkipSpace();
        if (!Accept("=")) return rest = before, std::nullopt;
        SkipSpace();
        const std::string_view quote = rest.substr(0, 1);
        if (quote != "\"" && quote != "'") return rest = before, std::nullopt;
        rest.remove_prefix(1);
        const auto value = ReadUntil(quote);
        if (!value) rest = before;
        return value;
    }

    bool ReadDeclaration() {
        if (rest.substr(0, 5) != "<?xml" || rest.size() < 6 || !IsSpace(rest[5])) return true;
        rest.remove_prefix(5);
        if (ParseAttribute("version") != "1.0") return false;
        if (const auto encoding = ParseAttribute("encoding")) {
            if (lowerCase(*encoding) != "utf-8") {
                reason = "the XML is not encoded in UTF-8";
                return false;
            }
        }
        if (const auto standalone = ParseAttribute("standalone");
            standalone && standalone != "yes" && standalone != "no")
            return false;
        SkipSpace();
        return Accept("?>");
    }

    bool ReadNext() {
        if (rest.front() != '<') return ReadText();
        if (Accept("<!--")) {
            const auto comment = ReadUntil("--");
            return comment && Accept(">");
        }
        if (Accept("<![CDATA[")) return ReadLiteralText();
        if (Accept("<!DOCTYPE")) return ReadDocumentType();
        if (Accept("<?")) return ReadInstruction();
        if (Accept("</")) return ReadEnd();
        rest.remove_prefix(1);
        return ReadStart();
    }

    bool ReadInstruction() {
        const std::string_view target = ParseName();
        const auto behind = std::find_if_not(rest.begin(), rest.end(), [](char c) {
            return IsLetter(c) || IsDigit(c) || c == '-' || c == '_' || c == '.';
        });
        const bool isXml = lowerCase(target) == "xml" && behind == rest.begin();
        rest.remove_prefix(static_cast<std::size_t>(behind - rest.begin()));
        if (target.empty() || isXml || rest.empty() || (!IsSpace(rest.front()) && rest.substr(0, 2) != "?>"))
            return false;
        return ReadUntil("?>").has_value();
    }

    /// Reads the rest of a document type: ` plist PUBLIC "..." "..."`. Declarations in it are rejected.
    bool ReadDocumentType() {
        if (hasType || hasRoot || !open.empty() || rest.empty() || !IsSpace(rest[0])) return false;
        hasType = true;
        SkipSpace();
        if (!Accept("plist")) return false;
        const bool isPublic = AcceptSpaced("PUBLIC");
        if (isPublic && !ParseQuoted()) return false;
        if ((isPublic || AcceptSpaced("SYSTEM")) && !ParseQuoted()) return false;
        SkipSpace();
        return Accept(">");
    }

    bool AcceptSpaced(std::string_view word) {
        const std::string_view before = rest;
        SkipSpace();
        if (rest.size() < before.size() && Accept(word)) return true;
        rest = before;
        return false;
    }

    bool ParseQuoted() {
        const std::size_t sizeBefore = rest.size();
        SkipSpace();
        if (rest.size() == sizeBefore || !Accept("\"")) return false;
        const auto text = ReadUntil("\"");
        return text && std::all_of(text->begin(), text->end(), [](char c) {
                   return IsLetter(c) || IsDigit(c) ||
                          std::string_view(" -'()+,./:=?;!*#@$_%").find(c) != std::string_view::npos;
               });
    }

    bool ReadStart() {
        const std::string_view name = ParseName();
        const auto* const element = std::find_if(std::begin(kElements), std::end(kElements),
                                                 [name](const Element& e) { return e.name == name; });
        if (element == std::end(kElements) || !MayStand(element->role)) return false;
        if (element->role == Role::kPropertyList) {
            const auto version = ParseAttribute("version");
            if (version && version->find_first_of("<&") != version->npos) return false;
        }
        SkipSpace();
        const bool isEmpty = Accept("/");
        if (!Accept(">")) return false;
        open.push_back({element, {}, {}});
        content.clear();
        if (open.size() > kMaxPropertyListDepth + 2 || ++count > kMaxPropertyListValues) {
            reason =
                count > kMaxPropertyListValues ? "more than 1048576 values" : "nested deeper than 512 levels";
            return false;
        }
        return !isEmpty || Close();
    }

    /// Returns whether an element may come next. Keys and values of a dictionary alternate.
    bool MayStand(Role role) {
        if (open.empty()) return !hasRoot && role != Role::kKey && (hasRoot = true);
        const Opened& parent = open.back();
        switch (parent.element->role) {
        case Role::kPropertyList:
            return parent.members.empty() && role != Role::kPropertyList && role != Role::kKey;
        case Role::kDictionary:
            return role != Role::kPropertyList && (role == Role::kKey) == (parent.members.size() % 2 == 0);
        case Role::kArray:
            return role != Role::kPropertyList && role != Role::kKey;
        default:
            return false;
        }
    }

    bool ReadEnd() {
        if (open.empty() || ParseName() != open.back().element->name) return false;
        SkipSpace();
        return Accept(">") && Close();
    }

    bool Close() {
        const Opened closed = std::move(open.back());
        open.pop_back();
        if (closed.element->role == Role::kPropertyList) return closed.members.size() == 1;
        const auto object = closed.element->object ? Scalar(*closed.element) : Container(closed);
        if (!object) return false;
        root = *object; // The element that is closed last is the root.
        if (!open.empty()) open.back().members.push_back(*object);
        return true;
    }

    std::optional<BinaryPlistWriter::Object> Scalar(const Element& element) {
        const auto bytes = element.object(content);
        if (element.role == Role::kKey) reason = KeyFault();
        if (!bytes || !reason.empty()) return std::nullopt;
        return writer.Add(*bytes);
    }

    std::optional<BinaryPlistWriter::Object> Container(const Opened& closed) {
        if (closed.element->role == Role::kArray)
            return writer.AddContainer(BinaryKind::kArray, closed.members);
        const std::size_t pairs = closed.members.size() / 2;
        if (closed.members.size() != 2 * pairs) return std::nullopt;
        std::vector<BinaryPlistWriter::Object> keysAndValues(closed.members.size());
        for (std::size_t i = 0; i < pairs; ++i) {
            keysAndValues[i] = closed.members[2 * i];
            keysAndValues[pairs + i] = closed.members[2 * i + 1];
        }
        return writer.AddContainer(BinaryKind::kDictionary, keysAndValues);
    }

    /// Returns the reason why the dictionary cannot have the key that was read, or an empty string.
    const char* KeyFault() {
        if (content.empty()) return "a dictionary has an empty key";
        return open.back().keys.insert(content).second ? "" : "a dictionary has the same key twice";
    }

    bool AcceptsText() const { return !open.empty() && open.back().element->object; }

    bool ReadLiteralText() {
        const auto literal = ReadUntil("]]>");
        if (!literal || !AcceptsText()) return false;
        AppendLines(*literal);
        return true;
    }

    /// Appends text to the content of the element. Every line end becomes a line feed.
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
        if (!AcceptsText()) {
            rest.remove_prefix(run.size());
            return Stripped(run).empty();
        }
        if (run.find("]]>") != run.npos) return false;
        const std::size_t literal = std::min(run.find('&'), run.size());
        AppendLines(run.substr(0, literal));
        rest.remove_prefix(literal);
        return literal == run.size() || ReadReference();
    }

    bool ReadReference() {
        constexpr std::string_view named[] = {"&lt;", "&gt;", "&amp;", "&apos;", "&quot;"};
        for (std::size_t i = 0; i < std::size(named); ++i) {
            if (Accept(named[i])) return content += "<>&'\""[i], true;
        }
        if (!Accept("&#")) return false;
        const bool isHexadecimal = Accept("x");
        std::uint32_t character = 0;
        const auto read =
            std::from_chars(rest.data(), rest.data() + rest.size(), character, isHexadecimal ? 16 : 10);
        rest.remove_prefix(static_cast<std::size_t>(read.ptr - rest.data()));
        if (read.ec != std::errc() || !Accept(";") || !isXmlCharacter(character)) return false;
        content += Utf8Of(character);
        return true;
    }

    const std::string& xml;
    std::string_view rest;
    BinaryPlistWriter writer;
    BinaryPlistWriter::Object root = 0;
    std::vector<Opened> open;
    std::string content; ///< The text of the innermost element up to the current position.
    std::size_t count = 0;
    bool hasRoot = false, hasType = false;
    std::string reason;
};

} // namespace

std::string BinaryPlistFromXml(const std::string& xml, std::string& error) {
    XmlReader reader(xml);
    if (reader.Read()) return reader.Binary();
    error = reader.Error();
    return {};
}

} // namespace macplatform
