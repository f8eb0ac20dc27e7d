#include "XmlPlist.h"

#include "XmlPlistTokenizer.h"

#include <algorithm>
#include <iterator>

namespace macplatform {

namespace {

using Kind = PropertyValue::Kind;

/// An element of an XML property list. The element `plist` has no kind.
struct Element {
    std::string_view name;
    Kind kind;
    bool isKey = false, isTrue = false;
};
constexpr Element kElements[] = {{"plist", Kind::kNone},    {"dict", Kind::kDictionary},
                                 {"array", Kind::kArray},   {"key", Kind::kString, true},
                                 {"string", Kind::kString}, {"integer", Kind::kInteger},
                                 {"real", Kind::kReal},     {"date", Kind::kDate},
                                 {"data", Kind::kData},     {"true", Kind::kBoolean, false, true},
                                 {"false", Kind::kBoolean}};

/// The grammar. The limit of the depth limits the recursion.
class XmlReader {
public:
    XmlReader(std::string_view text, std::size_t start) : tokens(text, start) {}

    XmlPlist Read() {
        tokens.SkipProlog();
        plist.root = ReadElement(tokens.ReadStartTag());
        return std::move(plist);
    }

private:
    /// Reads the contents and the end of an element.
    PropertyValue ReadElement(const XmlTag& tag) {
        const Element& element = ElementOf(tag);
        if (element.kind == Kind::kNone) return ReadWrapped(tag);
        if (++count > kMaxPropertyListValues) throw PropertyListError(kTooManyValues);
        const bool isContainer = element.kind == Kind::kArray || element.kind == Kind::kDictionary;
        return isContainer ? ReadContainer(element, tag) : ReadScalar(element, tag);
    }

    const Element& ElementOf(const XmlTag& tag) const {
        const auto* const element = std::find_if(std::begin(kElements), std::end(kElements),
                                                 [&tag](const Element& e) { return e.name == tag.name; });
        if (element == std::end(kElements)) tokens.Refuse("unknown element");
        return *element;
    }

    /// Reads the one value of an element `plist`, which may be inside other elements.
    PropertyValue ReadWrapped(const XmlTag& tag) {
        if (tag.isEmpty) tokens.Refuse("the element <plist> is empty");
        if (++wrappers > kMaxPropertyListDepth) throw PropertyListError(kTooDeep);
        tokens.SkipBetweenElements();
        PropertyValue value = ReadElement(tokens.ReadStartTag());
        tokens.SkipBetweenElements();
        tokens.ReadEndTag(tag.name);
        return value;
    }

    PropertyValue ReadContainer(const Element& element, const XmlTag& tag) {
        if (++depth > kMaxPropertyListDepth) throw PropertyListError(kTooDeep);
        if (depth == 1) plist.startTagEnd = tokens.Position();
        if (depth == 1) plist.isEmptyTag = tag.isEmpty;
        PropertyValue value = ContainerValue(element.kind);
        if (!tag.isEmpty) ReadMembers(value, element.name);
        --depth;
        if (value.kind == Kind::kDictionary) RemoveRepeatedKeys(value, RepeatedKeys::kLastCounts);
        const bool isUid = value.keys.size() == 1 && value.keys.front() == "CF$UID" &&
                           value.values.front().kind == Kind::kInteger;
        return isUid ? UidValue(static_cast<std::uint64_t>(value.values.front().integer)) : value;
    }

    void ReadMembers(PropertyValue& container, std::string_view name) {
        for (tokens.SkipBetweenElements(); !tokens.IsAtEndTag(); tokens.SkipBetweenElements()) {
            if (container.kind == Kind::kDictionary) {
                ReadEntry(container);
            } else {
                container.items.push_back(ReadElement(tokens.ReadStartTag()));
            }
        }
        tokens.ReadEndTag(name);
    }

    void ReadEntry(PropertyValue& dictionary) {
        const XmlTag key = tokens.ReadStartTag();
        if (!ElementOf(key).isKey) tokens.Refuse("a value without a key");
        dictionary.keys.push_back(ReadElement(key).text);
        tokens.SkipBetweenElements();
        if (tokens.IsAtEndTag()) tokens.Refuse("a key without a value");
        const XmlTag value = tokens.ReadStartTag();
        dictionary.values.push_back(ReadElement(value));
        if (depth == 1)
            plist.entries.push_back({dictionary.keys.back(), key.begin, value.begin, tokens.Position()});
    }

    PropertyValue ReadScalar(const Element& element, const XmlTag& tag) {
        std::optional<PropertyValue> value;
        if (element.kind == Kind::kBoolean) value = BooleanValue(element.isTrue);
        if (element.kind == Kind::kString) value = StringValue(tag.isEmpty ? "" : tokens.ReadText());
        if (!value && tag.isEmpty) tokens.Refuse("the element <" + std::string(element.name) + "> is empty");
        if (element.kind == Kind::kInteger) value = IntegerFrom(tokens.ReadRawText());
        if (element.kind == Kind::kReal) value = RealFrom(tokens.ReadText());
        if (element.kind == Kind::kDate) value = DateFrom(tokens.ReadRawText());
        if (element.kind == Kind::kData) value = DataFrom(tokens.ReadRawText());
        if (!value) tokens.Refuse("not a valid <" + std::string(element.name) + '>');
        if (!tag.isEmpty) tokens.ReadEndTag(element.name);
        return std::move(*value);
    }

    XmlPlistTokenizer tokens;
    XmlPlist plist;
    std::size_t count = 0;
    unsigned wrappers = 0; ///< The number of elements `plist` so far.
    unsigned depth = 0;    ///< The number of open arrays and dictionaries.
};

} // namespace

XmlPlist ReadXmlPlist(std::string_view text, std::size_t start) { return XmlReader(text, start).Read(); }

} // namespace macplatform
