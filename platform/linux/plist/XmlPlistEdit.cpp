#include "XmlPlist.h"

#include "PropertyListLimits.h"

#include <map>

namespace macplatform {

namespace {

using Kind = PropertyValue::Kind;

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

class XmlEditor {
public:
    XmlEditor(std::string_view source, std::size_t start) : text(source), plist(ReadXmlPlist(source, start)) {
        if (plist.root.kind != Kind::kDictionary) throw PropertyListError("the root is not a dictionary");
    }

    std::string With(const PropertyListChanges& changes) {
        for (std::size_t i = 0; i < plist.entries.size(); ++i) {
            const std::string& key = plist.entries[i].key;
            if (changes.count(key) > 0) lastEntries[key] = i;
        }
        for (std::size_t i = 0; i < plist.entries.size(); ++i) {
            const auto change = changes.find(plist.entries[i].key);
            if (change != changes.end()) Change(i, change->second);
        }
        CopyUntil(plist.entries.empty() ? plist.startTagEnd : plist.entries.back().end);
        Add(changes);
        CopyUntil(text.size());
        return std::move(edited);
    }

private:
    void CopyUntil(std::size_t end) {
        if (end <= copied) return;
        edited += text.substr(copied, end - copied);
        copied = end;
    }

    /// Returns the white space before an entry.
    std::string_view SpaceBefore(const XmlPlist::Entry& entry) const {
        const std::size_t end = text.find_last_not_of(" \t\r\n", entry.begin - 1) + 1;
        return text.substr(end, entry.begin - end);
    }

    void Change(std::size_t index, const std::optional<PropertyValue>& value) {
        const XmlPlist::Entry& entry = plist.entries[index];
        if (!value) {
            CopyUntil(entry.begin - SpaceBefore(entry).size());
            copied = entry.end;
        } else if (lastEntries[entry.key] == index) {
            CopyUntil(entry.value);
            edited += XmlElement(*value);
            copied = entry.end;
        }
    }

    /// Adds the new keys behind what was copied.
    void Add(const PropertyListChanges& changes) {
        const std::string space(plist.entries.empty() ? "\n\t" : SpaceBefore(plist.entries.front()));
        std::string added;
        for (const auto& [key, value] : changes) {
            if (!value || lastEntries.count(key) > 0) continue;
            added.append(space).append(XmlKeyElement(key));
            added.append(space).append(XmlElement(*value));
        }
        if (plist.isEmptyTag && !added.empty()) {
            edited.replace(edited.size() - 2, 2, ">"); // <dict/> becomes <dict>.
            added += "\n</dict>";
        }
        edited += added;
    }

    std::string_view text;
    XmlPlist plist;
    std::map<std::string_view, std::size_t> lastEntries; ///< The last entry of each key that changes.
    std::string edited;
    std::size_t copied = 0; ///< The bytes of `text` that are copied or dropped.
};

} // namespace

std::string XmlElement(const PropertyValue& value) {
    if (value.kind == Kind::kBoolean) return '<' + value.text + "/>";
    const std::string name = value.KindName();
    return '<' + name + '>' + escaped(value.text) + "</" + name + '>';
}

std::string XmlKeyElement(const std::string& key) { return "<key>" + escaped(key) + "</key>"; }

std::string EditXmlPlist(std::string_view text, std::size_t start, const PropertyListChanges& changes) {
    return XmlEditor(text, start).With(changes);
}

} // namespace macplatform
