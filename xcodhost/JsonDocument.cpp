#include "JsonDocument.h"

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

Json ValueJson(const PropertyValue& value) {
    Json plain;
    switch (value.kind) {
    case PropertyValue::Kind::kBoolean:
        plain = value.integer != 0;
        break;
    case PropertyValue::Kind::kInteger:
        plain = value.integer;
        break;
    case PropertyValue::Kind::kArray:
        plain = Json::array();
        for (const PropertyValue& item : value.items) plain.push_back(ValueJson(item));
        break;
    case PropertyValue::Kind::kDictionary:
        plain = Json::object();
        for (std::size_t i = 0; i < value.keys.size(); ++i) {
            // Appended: looking for each key first, as operator[] does, takes quadratic time.
            plain.get_ref<Json::object_t&>().emplace_back(value.keys[i], ValueJson(value.values[i]));
        }
        break;
    default:
        plain = value.text;
    }
    return {{"type", value.KindName()}, {"value", std::move(plain)}};
}

Json FlagJson(const FinderFlagName& flag) {
    return {{"letter", std::string(1, flag.letter)}, {"name", flag.name}, {"mask", flag.mask}};
}

} // namespace xcodhost
