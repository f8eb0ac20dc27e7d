#include "JsonDocument.h"

#include <cstdint>

namespace xcodhost {

using macplatform::PropertyValue;

std::string DumpDocument(const Json& document) {
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::string ErrorDocument(ExitStatus status, const std::string& message) {
    const char* kind = status == ExitStatus::kUsage       ? "usage"
                       : status == ExitStatus::kNotLoaded ? "not-loaded"
                                                          : "tool";
    return DumpDocument(
        {{"error", {{"kind", kind}, {"message", message}}}, {"exitStatus", static_cast<int>(status)}});
}

namespace {

/// Returns an integer as a number. An integer that needs more than 64 bits becomes a string.
Json integerJson(const PropertyValue& value) {
    const auto number = static_cast<std::uint64_t>(value.integer);
    if (value.text == std::to_string(value.integer)) return value.integer;
    return value.text == std::to_string(number) ? Json(number) : Json(value.text);
}

} // namespace

Json ValueJson(const PropertyValue& value) {
    Json content;
    switch (value.kind) {
    case PropertyValue::Kind::kBoolean: content = value.integer != 0; break;
    case PropertyValue::Kind::kInteger: content = integerJson(value); break;
    case PropertyValue::Kind::kArray:
    case PropertyValue::Kind::kSet:
        content = Json::array();
        for (const PropertyValue& item : value.items) content.push_back(ValueJson(item));
        break;
    case PropertyValue::Kind::kDictionary:
        content = Json::object();
        for (std::size_t i = 0; i < value.keys.size(); ++i) {
            // operator[] would search for each key, which takes quadratic time.
            content.get_ref<Json::object_t&>().emplace_back(macplatform::EscapeSurrogates(value.keys[i]),
                                                            ValueJson(value.values[i]));
        }
        break;
    default: content = macplatform::EscapeSurrogates(value.text);
    }
    return {{"type", value.KindName()}, {"value", std::move(content)}};
}

Json FlagJson(const FinderFlagName& flag) {
    return {{"letter", std::string(1, flag.letter)}, {"name", flag.name}, {"mask", flag.mask}};
}

} // namespace xcodhost
