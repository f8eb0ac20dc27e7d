#include "Messages.h"

#include <nlohmann/json.hpp>

namespace xcodhost {

using nlohmann::json;

namespace {

json toJson(const CallBegan& call) {
    return {
        {"is", "began"}, {"function", call.function}, {"arguments", call.arguments}, {"event", call.event}};
}

json toJson(const CallReturned& call) {
    json value = {{"is", "returned"}, {"result", call.result}};
    if (call.block) {
        value["before"] = call.block->errorFlagsBefore;
        value["after"] = call.block->errorFlagsAfter;
        value["otherBytes"] = call.block->otherBytes;
    }
    return value;
}

json toJson(const macplatform::RecordedCall& entry) {
    return {{"is", "platformCall"},
            {"call", entry.call},
            {"arguments", entry.arguments},
            {"result", entry.result},
            {"note", entry.note}};
}

json toJson(const macplatform::Alert& alert) {
    return {{"is", "alert"},
            {"stop", alert.kind == macplatform::Alert::Kind::kStop},
            {"message", alert.message},
            {"buttons", alert.buttons},
            {"resource", alert.resource}};
}

json toJson(const ExceptionEscaped& exception) {
    return {{"is", "exception"}, {"type", exception.type}, {"what", exception.what}};
}

json toJson(const LoadFailed& failure) {
    return {{"is", "notLoaded"}, {"reason", failure.reason}, {"text", failure.text}};
}

json toJson(const ObjectsLeft& left) { return {{"is", "left"}, {"objects", left.objects}}; }

json toJson(const Finding& finding) {
    return {{"is", "finding"}, {"expected", finding.expected}, {"seen", finding.seen}};
}

json toJson(const CheckStep& step) { return {{"is", "step"}, {"kind", step.kind}, {"text", step.text}}; }

json toJson(const Skipped& skipped) { return {{"is", "skipped"}, {"reason", skipped.reason}}; }

json toJson(const TableCell& cell) {
    return {{"is", "cell"},
            {"product", cell.product},
            {"language", cell.language},
            {"seen", cell.seen},
            {"right", cell.isRight}};
}

json toJson(const ChildFault& fault) { return {{"is", "fault"}, {"text", fault.text}}; }

json toJson(const Done&) { return {{"is", "done"}}; }

std::string textAt(const json& value, const char* key) { return value.at(key).get<std::string>(); }

CallReturned returnedFrom(const json& value) {
    CallReturned call{textAt(value, "result"), std::nullopt};
    if (value.contains("before")) {
        call.block = {value.at("before").get<std::uint32_t>(), value.at("after").get<std::uint32_t>(),
                      textAt(value, "otherBytes")};
    }
    return call;
}

macplatform::Alert alertFrom(const json& value) {
    macplatform::Alert alert;
    alert.kind =
        value.at("stop").get<bool>() ? macplatform::Alert::Kind::kStop : macplatform::Alert::Kind::kMessage;
    alert.message = textAt(value, "message");
    alert.buttons = value.at("buttons").get<std::vector<std::string>>();
    alert.resource = value.at("resource").get<int>();
    return alert;
}

std::optional<Message> messageFrom(const json& value) {
    const std::string is = textAt(value, "is");
    if (is == "began") {
        return CallBegan{textAt(value, "function"), textAt(value, "arguments"), textAt(value, "event")};
    }
    if (is == "returned") return returnedFrom(value);
    if (is == "platformCall") {
        return macplatform::RecordedCall{textAt(value, "call"),
                                         value.at("arguments").get<std::vector<std::string>>(),
                                         textAt(value, "result"), textAt(value, "note")};
    }
    if (is == "alert") return alertFrom(value);
    if (is == "exception") return ExceptionEscaped{textAt(value, "type"), textAt(value, "what")};
    if (is == "notLoaded") return LoadFailed{textAt(value, "reason"), textAt(value, "text")};
    if (is == "left") return ObjectsLeft{value.at("objects").get<std::vector<std::string>>()};
    if (is == "finding") return Finding{textAt(value, "expected"), textAt(value, "seen")};
    if (is == "step") return CheckStep{textAt(value, "kind"), textAt(value, "text")};
    if (is == "skipped") return Skipped{textAt(value, "reason")};
    if (is == "cell") {
        return TableCell{value.at("product").get<std::int32_t>(), value.at("language").get<std::int32_t>(),
                         textAt(value, "seen"), value.at("right").get<bool>()};
    }
    if (is == "fault") return ChildFault{textAt(value, "text")};
    if (is == "done") return Done{};
    return std::nullopt;
}

} // namespace

std::string Encode(const Message& message) {
    const json value = std::visit([](const auto& one) { return toJson(one); }, message);
    return value.dump(-1, ' ', false, json::error_handler_t::replace) + '\n';
}

std::optional<Message> Decode(std::string_view line) {
    try {
        return messageFrom(json::parse(line));
    } catch (const json::exception&) {
        return std::nullopt;
    }
}

const char* LoadFailureReason(macplatform::BundleFault fault) {
    using macplatform::BundleFault;
    switch (fault) {
    case BundleFault::kNone: return "unknown";
    case BundleFault::kNoBundle: return "no-bundle";
    case BundleFault::kBrokenPropertyList: return "broken-property-list";
    case BundleFault::kMissingKey: return "missing-key";
    case BundleFault::kNoExecutable: return "no-executable";
    case BundleFault::kWrongArchitecture: return "wrong-architecture";
    case BundleFault::kCannotLoad: return "cannot-load";
    case BundleFault::kSymbolMissing: return "symbol-missing";
    case BundleFault::kFactoryReturnedNull: return "factory-refused";
    }
    return "unknown";
}

} // namespace xcodhost
