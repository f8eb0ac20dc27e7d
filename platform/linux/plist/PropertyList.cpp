#include <macplatform/PropertyList.h>

#include "BinaryPlistEdit.h"
#include "BinaryPlistReader.h"
#include "OldStylePlist.h"
#include "PropertyListBytes.h"
#include "PropertyListText.h"
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

/// Returns a dictionary after the changes. The entries that remain keep their order, and new entries follow
/// in the order of their keys.
PropertyValue withChanges(const PropertyValue& before, PropertyListChanges changes) {
    PropertyValue after = ContainerValue(PropertyValue::Kind::kDictionary);
    for (std::size_t i = 0; i < before.keys.size(); ++i) {
        const auto change = changes.find(before.keys[i]);
        const bool isChanged = change != changes.end();
        if (!isChanged || change->second) {
            after.keys.push_back(before.keys[i]);
            after.values.push_back(isChanged ? *change->second : before.values[i]);
        }
        if (isChanged) changes.erase(change);
    }
    for (const auto& [key, value] : changes) {
        if (!value) continue;
        after.keys.push_back(key);
        after.values.push_back(*value);
    }
    return after;
}

EditedPropertyList editText(const std::string& bytes, const ParsedPropertyList& before,
                            const PropertyListChanges& changes) {
    if (before.format == PropertyListFormat::kOldStyle)
        return {EditXmlPlist(XmlFromOldStyle(before.root), 0, changes),
                {},
                "the comments and the old style; the file is XML now"};
    const PropertyListText text = DecodePropertyListText(bytes);
    EditedPropertyList edited = {EditXmlPlist(text.text, text.start, changes), {}, {}};
    if (!text.convertedFrom.empty())
        edited.lost = "the encoding " + text.convertedFrom + "; the file is UTF-8 now";
    return edited;
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
    EditedPropertyList edited;
    if (before.format == PropertyListFormat::kBinary) {
        edited.bytes = EditBinaryPlist(bytes, changes);
    } else {
        edited = editText(bytes, before, changes);
    }
    edited.root = ParsePropertyList(edited.bytes).root;
    if (edited.root != withChanges(before.root, changes))
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
