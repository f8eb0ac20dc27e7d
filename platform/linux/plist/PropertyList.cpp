#include <macplatform/PropertyList.h>

#include "BinaryPlist.h"
#include "OldStylePlist.h"
#include "PropertyListBytes.h"
#include "XmlPlist.h"
#include "posix/WholeFile.h"

#include <cerrno>
#include <cstring>

namespace macplatform {

namespace {

bool isBinary(const std::string& bytes) { return bytes.size() > 7 && bytes.compare(0, 7, "bplist0") == 0; }

/// Reads text as XML, or as an old-style property list if it is no XML.
ParsedPropertyList parseText(const PropertyListText& text) {
    std::string xmlError;
    try {
        return {ReadXmlPlist(text.text, text.start).root, PropertyListFormat::kXml};
    } catch (const PropertyListError& error) {
        xmlError = error.what();
    }
    try {
        return {ReadOldStylePlist(text.text, text.start), PropertyListFormat::kOldStyle};
    } catch (const PropertyListError& error) {
        const std::size_t first = text.text.find_first_not_of(" \t\r\n", text.start);
        const bool isXml = first != std::string::npos && text.text[first] == '<';
        throw PropertyListError(isXml ? xmlError : std::string("not a property list: ") + error.what());
    }
}

/// Returns whether the changes make `after` of `before`: the entries that remain keep their order, and new
/// entries follow in the order of their keys.
bool isResult(const PropertyValue& after, const PropertyValue& before, PropertyListChanges changes) {
    std::size_t count = 0;
    const auto isNext = [&](const std::string& key, const PropertyValue& value) {
        const std::size_t i = count++;
        return i < after.keys.size() && after.keys[i] == key && after.values[i] == value;
    };
    for (std::size_t i = 0; i < before.keys.size(); ++i) {
        const auto change = changes.extract(before.keys[i]);
        if (change && !change.mapped()) continue;
        if (!isNext(before.keys[i], change ? *change.mapped() : before.values[i])) return false;
    }
    for (const auto& [key, value] : changes) {
        if (value && !isNext(key, *value)) return false;
    }
    return count == after.keys.size();
}

EditedPropertyList edit(const std::string& bytes, const ParsedPropertyList& before,
                        const PropertyListChanges& changes) {
    if (before.format == PropertyListFormat::kBinary) return {EditBinaryPlist(bytes, changes), {}, {}};
    if (before.format == PropertyListFormat::kOldStyle) {
        const std::string xml = XmlFromOldStyle(before.root);
        return {EditXmlPlist(xml, 0, changes), {}, "the comments and the old style; the file is XML now"};
    }
    const auto [text, start, encoding] = DecodePropertyListText(bytes);
    const std::string lost = encoding.empty() ? "" : "the encoding " + encoding + "; the file is UTF-8 now";
    return {EditXmlPlist(text, start, changes), {}, lost};
}

} // namespace

ParsedPropertyList ParsePropertyList(const std::string& bytes) {
    if (bytes.size() > kMaxPropertyListBytes) throw PropertyListError(kTooLarge);
    if (bytes.empty()) throw PropertyListError("the file is empty");
    if (isBinary(bytes)) return {ReadBinaryPlist(bytes), PropertyListFormat::kBinary};
    return parseText(DecodePropertyListText(bytes));
}

EditedPropertyList EditPropertyList(const std::string& bytes, const PropertyListChanges& changes) {
    const ParsedPropertyList before = ParsePropertyList(bytes);
    EditedPropertyList edited = edit(bytes, before, changes);
    edited.root = ParsePropertyList(edited.bytes).root;
    if (!isResult(edited.root, before.root, changes))
        throw PropertyListError("the file cannot be rewritten without loss");
    return edited;
}

PropertyListFile ReadPropertyList(const std::string& path) {
    PropertyListFile file;
    std::string bytes;
    file.errorNumber = ReadWholeFile(path, kMaxPropertyListBytes, bytes);
    if (file.errorNumber != 0) {
        file.error = file.errorNumber == EFBIG ? kTooLarge : std::strerror(file.errorNumber);
        return file;
    }
    try {
        ParsedPropertyList parsed = ParsePropertyList(bytes);
        file.root = std::move(parsed.root);
        file.format = parsed.format;
    } catch (const PropertyListError& error) {
        file.error = error.what();
    }
    return file;
}

} // namespace macplatform
