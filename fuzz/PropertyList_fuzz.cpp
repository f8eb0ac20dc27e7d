// Hostile property lists: what is accepted reads as an XML reader that others wrote has it, and survives
// being edited and written.

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

/// The elements and texts of a document as the XML library finds them: "<dict><key>a</key>...".
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
    Require(Outline::Of(bytes, expected), "what is taken is well-formed XML");
    appendOutline(root, seen);
    if (expected.compare(0, 7, "<plist>") == 0) seen = "<plist>" + seen + "</plist>";
    RequireEqual(seen, expected, "the elements and texts that the XML library sees");
}

/// The parser writes no dates before the year 1000 that it would read again.
bool holdsDate(const PropertyValue& value) {
    return value.kind == PropertyValue::Kind::kDate ||
           std::any_of(value.items.begin(), value.items.end(), holdsDate) ||
           std::any_of(value.values.begin(), value.values.end(), holdsDate);
}

/// The list with one key more, which binary lists take whatever else they hold.
void checkEdit(const std::string& plist, PropertyValue root) {
    if (root.kind != PropertyValue::Kind::kDictionary || root.Find("added")) return;
    const auto edited = macplatform::EditBinaryPlist(plist, {{"added", macplatform::BooleanObject(true)}});
    if (!edited) return; // who edits such a list leaves the file as it is
    std::string error;
    const auto again = ParsePropertyList(*edited, error);
    Require(again != nullptr, "an edited list can be read");
    PropertyValue value;
    value.kind = PropertyValue::Kind::kBoolean;
    value.text = "true";
    value.integer = 1;
    root.keys.push_back("added");
    root.values.push_back(value);
    Require(ValueOf(again.get()) == root, "and has the key, and all that was there");
    const auto back = macplatform::EditBinaryPlist(*edited, {{"added", std::nullopt}});
    Require(back.has_value() && ParsePropertyList(*back, error) != nullptr, "the key goes away again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(Bytes(data, size));
    std::string error;
    const std::string plist = ToBinaryPlist(bytes, error);
    Require(plist.empty() == !error.empty(), "no list has a reason");
    const auto tree = plist.empty() ? nullptr : ParseBinaryPlist(plist, error);
    Require((tree == nullptr) == !error.empty(), "no list has a reason");
    if (!tree) return 0;
    const PropertyValue root = ValueOf(tree.get());
    checkEdit(plist, root);
    if (FormatOf(bytes) == PropertyListFormat::kBinary) return 0;
    checkXml(bytes, root);
    if (bytes.find("&#") != bytes.npos || holdsDate(root))
        return 0; // who rewrites such a list compares, and leaves the file as it is

    const auto again = ParsePropertyList(ToXmlPlist(plist), error);
    Require(again != nullptr, "its form can be written and read");
    Require(ValueOf(again.get()) == root, "and is the same list");
    return 0;
}
