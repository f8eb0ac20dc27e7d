// Reads hostile property lists. The values of an accepted property list must be those that a third-party XML
// reader finds. They must not change when the property list is edited and written.

#include "Property.h"

#include "plist/BinaryPlistEdit.h"
#include "plist/BinaryPlistWriter.h"
#include "plist/PropertyListTree.h"

#include <algorithm>
#include <expat.h>
#include <memory>
#include <vector>

using macplatform::FormatOf;
using macplatform::ParseBinaryPlist;
using macplatform::ParsePropertyList;
using macplatform::PropertyListFormat;
using macplatform::PropertyValue;
using macplatform::ToBinaryPlist;
using macplatform::ToXmlPlist;
using macplatform::ValueOf;

namespace {

/// Collects the elements, keys and strings of a document with the XML library: "<dict><key>a</key>...".
class Outline {
public:
    static bool Of(const std::string& xml, std::string& outline) {
        const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate("UTF-8"),
                                                                                  &XML_ParserFree);
        Outline reader;
        XML_SetUserData(parser.get(), &reader);
        XML_SetElementHandler(parser.get(), &Open, &Close);
        XML_SetCharacterDataHandler(parser.get(), &Text);
        const bool good =
            XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), 1) == XML_STATUS_OK;
        outline = std::move(reader.seen);
        return good;
    }

private:
    static void Open(void* self, const char* name, const char**) {
        static_cast<Outline*>(self)->text.clear();
        static_cast<Outline*>(self)->seen += '<' + std::string(name) + '>';
    }
    static void Close(void* self, const char* name) {
        auto& outline = *static_cast<Outline*>(self);
        const std::string element = name;
        if (element == "key" || element == "string") outline.seen += outline.text;
        outline.text.clear();
        outline.seen += "</" + element + '>';
    }
    static void Text(void* self, const char* bytes, int length) {
        static_cast<Outline*>(self)->text.append(bytes, static_cast<std::size_t>(length));
    }

    std::string seen, text;
};

std::string elementName(const PropertyValue& value) {
    return value.kind == PropertyValue::Kind::kBoolean ? value.text : value.KindName();
}

void appendOutline(const PropertyValue& value, std::string& outline) {
    const std::string name = elementName(value);
    outline += '<' + name + '>';
    if (value.kind == PropertyValue::Kind::kString) outline += value.text;
    for (const PropertyValue& item : value.items) appendOutline(item, outline);
    for (std::size_t i = 0; i < value.keys.size(); ++i) {
        outline += "<key>" + value.keys[i] + "</key>";
        appendOutline(value.values[i], outline);
    }
    outline += "</" + name + '>';
}

void checkXml(const std::string& bytes, const PropertyValue& root) {
    std::string seen, expected;
    Require(Outline::Of(bytes, expected), "an accepted property list is well-formed XML");
    appendOutline(root, seen);
    if (expected.compare(0, 7, "<plist>") == 0) seen = "<plist>" + seen + "</plist>";
    RequireEqual(seen, expected, "the elements and strings are those of the XML library");
}

/// Returns whether the value contains a date.
/// The parser cannot read the dates before the year 1000 that it writes.
bool holdsDate(const PropertyValue& value) {
    return value.kind == PropertyValue::Kind::kDate ||
           std::any_of(value.items.begin(), value.items.end(), holdsDate) ||
           std::any_of(value.values.begin(), value.values.end(), holdsDate);
}

/// Adds a key to a binary property list, and removes the key again. The other entries must not change.
void checkEdit(const std::string& plist, PropertyValue root) {
    if (root.kind != PropertyValue::Kind::kDictionary || root.Find("added")) return;
    const auto edited = macplatform::EditBinaryPlist(plist, {{"added", macplatform::BooleanObject(true)}});
    if (!edited) return; // The caller then keeps the file unchanged.
    std::string error;
    const auto again = ParsePropertyList(*edited, error);
    Require(again != nullptr, "an edited property list can be read");
    PropertyValue value;
    value.kind = PropertyValue::Kind::kBoolean;
    value.text = "true";
    value.integer = 1;
    root.keys.push_back("added");
    root.values.push_back(value);
    Require(ValueOf(again.get()) == root, "an edited property list has the key and all old entries");
    const auto back = macplatform::EditBinaryPlist(*edited, {{"added", std::nullopt}});
    Require(back.has_value() && ParsePropertyList(*back, error) != nullptr, "the key can be removed again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(Bytes(data, size));
    std::string error;
    const std::string plist = ToBinaryPlist(bytes, error);
    Require(plist.empty() == !error.empty(), "there is an error exactly if there is no property list");
    const auto tree = plist.empty() ? nullptr : ParseBinaryPlist(plist, error);
    Require((tree == nullptr) == !error.empty(), "there is an error exactly if there is no tree");
    if (!tree) return 0;
    const PropertyValue root = ValueOf(tree.get());
    checkEdit(plist, root);
    if (FormatOf(bytes) == PropertyListFormat::kBinary) return 0;
    checkXml(bytes, root);
    // A caller that writes such a property list compares the result,
    // and keeps the file unchanged if it differs.
    if (bytes.find("&#") != bytes.npos || holdsDate(root)) return 0;

    const auto again = ParsePropertyList(ToXmlPlist(plist), error);
    Require(again != nullptr, "the XML that is written can be read");
    Require(ValueOf(again.get()) == root, "the XML that is written has the same values");
    return 0;
}
