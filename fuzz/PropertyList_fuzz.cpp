// Reads hostile property lists in all formats. Adding a key and removing it again must keep all other values,
// and the bytes of XML.

#include "Property.h"

#include "plist/PropertyListBytes.h"

using macplatform::EditedPropertyList;
using macplatform::EditPropertyList;
using macplatform::ParsedPropertyList;
using macplatform::ParsePropertyList;
using macplatform::PropertyListError;
using macplatform::PropertyListFormat;
using macplatform::PropertyValue;

namespace {

/// Adds a key to a dictionary that does not have the key.
EditedPropertyList withKey(const std::string& bytes, const ParsedPropertyList& before) {
    EditedPropertyList edited = EditPropertyList(bytes, {{"added", macplatform::BooleanValue(true)}});
    PropertyValue expected = before.root;
    expected.keys.push_back("added");
    expected.values.push_back(macplatform::BooleanValue(true));
    Require(ParsePropertyList(edited.bytes).root == expected,
            "an edited list has the key and all old entries");
    return edited;
}

void checkEdits(const std::string& bytes, const ParsedPropertyList& before) {
    EditedPropertyList added;
    try {
        added = withKey(bytes, before);
    } catch (const PropertyListError&) {
        // XML cannot represent the lone surrogates of an old-style list.
        Require(before.format == PropertyListFormat::kOldStyle,
                "XML and binary property lists can be edited");
        return;
    }
    const EditedPropertyList back = EditPropertyList(added.bytes, {{"added", std::nullopt}});
    Require(ParsePropertyList(back.bytes).root == before.root, "the key can be removed again");
    const bool keepsBytes = before.format == PropertyListFormat::kXml && added.lost.empty();
    Require(!keepsBytes || before.root.keys.empty() || back.bytes == bytes, "all bytes of XML are kept");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(Bytes(data, size));
    ParsedPropertyList parsed{};
    try {
        parsed = ParsePropertyList(bytes);
    } catch (const PropertyListError& error) {
        Require(*error.what() != '\0', "a rejected list has a reason");
        return 0;
    }
    Require(parsed.root.kind != PropertyValue::Kind::kNone, "an accepted list has a value");
    static_cast<void>(parsed.root.Describe());
    const bool canAdd = parsed.root.kind == PropertyValue::Kind::kDictionary && !parsed.root.Find("added");
    if (canAdd) checkEdits(bytes, parsed);
    return 0;
}
