#include "XmlPlist.h"

#include <map>

namespace macplatform {

namespace {

/// Escapes the characters that would be markup, and the characters that other readers would change.
std::string escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        const bool isControl = static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n';
        if (isControl || c == '&' || c == '<' || c == '>') {
            escaped += "&#" + std::to_string(static_cast<int>(c)) + ';';
        } else {
            escaped += c;
        }
    }
    return escaped;
}

/// Copies a text and replaces parts of it, which must be given in their order.
class PartlyReplaced {
public:
    explicit PartlyReplaced(std::string_view source) : text(source) {}

    void Replace(std::size_t begin, std::size_t end, std::string_view with) {
        copy.append(text.substr(copied, begin - copied)).append(with);
        copied = end;
    }
    std::string Text() const { return copy + std::string(text.substr(copied)); }

private:
    std::string_view text;
    std::string copy;
    std::size_t copied = 0; ///< The bytes of `text` that are copied or replaced.
};

/// Returns the white space before an entry.
std::string_view spaceBefore(std::string_view text, const XmlPlist::Entry& entry) {
    const std::size_t end = text.find_last_not_of(" \t\r\n", entry.begin - 1) + 1;
    return text.substr(end, entry.begin - end);
}

using LastEntries = std::map<std::string_view, std::size_t>; ///< The last entry of each key that changes.

LastEntries changeEntries(PartlyReplaced& copy, std::string_view text, const XmlPlist& plist,
                          const PropertyListChanges& changes) {
    LastEntries last;
    for (std::size_t i = 0; i < plist.entries.size(); ++i) {
        const std::string& key = plist.entries[i].key;
        if (changes.count(key) > 0) last[key] = i;
    }
    for (std::size_t i = 0; i < plist.entries.size(); ++i) {
        const XmlPlist::Entry& entry = plist.entries[i];
        const auto change = changes.find(entry.key);
        if (change == changes.end()) continue;
        if (!change->second) {
            copy.Replace(entry.begin - spaceBefore(text, entry).size(), entry.end, {});
        } else if (last[entry.key] == i) {
            copy.Replace(entry.value, entry.end, XmlElement(*change->second));
        }
    }
    return last;
}

} // namespace

std::string XmlElement(const PropertyValue& value) {
    if (value.kind == PropertyValue::Kind::kBoolean) return '<' + value.text + "/>";
    const std::string name = value.KindName();
    return '<' + name + '>' + escaped(value.text) + "</" + name + '>';
}

std::string XmlKeyElement(const std::string& key) { return "<key>" + escaped(key) + "</key>"; }

std::string EditXmlPlist(std::string_view text, std::size_t start, const PropertyListChanges& changes) {
    const XmlPlist plist = ReadXmlPlist(text, start);
    if (plist.root.kind != PropertyValue::Kind::kDictionary)
        throw PropertyListError("the root is not a dictionary");
    PartlyReplaced copy(text);
    const LastEntries last = changeEntries(copy, text, plist, changes);
    const bool isEmpty = plist.entries.empty();
    const std::string space(isEmpty ? "\n\t" : spaceBefore(text, plist.entries.front()));
    std::string added;
    for (const auto& [key, value] : changes) {
        if (!value || last.count(key) > 0) continue;
        added.append(space).append(XmlKeyElement(key)).append(space).append(XmlElement(*value));
    }
    const std::size_t end = isEmpty ? plist.startTagEnd : plist.entries.back().end;
    if (plist.isEmptyTag && !added.empty()) {
        const char* const close = text[end - 3] == '/' ? " >" : ">"; // An attribute may end with a slash.
        copy.Replace(end - 2, end, close + added + "\n</dict>");     // <dict/> becomes <dict>.
    } else {
        copy.Replace(end, end, added);
    }
    return copy.Text();
}

} // namespace macplatform
