#include "Messages.h"

#include <nlohmann/json.hpp>

namespace xcodhost {

using nlohmann::json;

namespace {

json ToJson(const CallBegan& call) {
    return {
        {"is", "began"}, {"function", call.function}, {"arguments", call.arguments}, {"event", call.event}};
}

json ToJson(const CallReturned& call) {
    json value = {{"is", "returned"}, {"result", call.result}};
    if (call.block) {
        value["before"] = call.block->errorFlagsBefore;
        value["after"] = call.block->errorFlagsAfter;
        value["otherBytes"] = call.block->otherBytes;
    }
    return value;
}

json ToJson(const macplatform::JournalEntry& entry) {
    return {{"is", "journal"},
            {"call", entry.call},
            {"arguments", entry.arguments},
            {"result", entry.result},
            {"note", entry.note}};
}

json ToJson(const macplatform::Alert& alert) {
    return {{"is", "alert"},
            {"stop", alert.kind == macplatform::Alert::Kind::Stop},
            {"message", alert.message},
            {"buttons", alert.buttons},
            {"resource", alert.resource}};
}

json ToJson(const ExceptionEscaped& exception) {
    return {{"is", "exception"}, {"type", exception.type}, {"what", exception.what}};
}

json ToJson(const LoadFailed& failure) {
    return {{"is", "notLoaded"}, {"reason", failure.reason}, {"text", failure.text}};
}

json ToJson(const ObjectsLeft& left) { return {{"is", "left"}, {"objects", left.objects}}; }

json ToJson(const Finding& finding) {
    return {{"is", "finding"}, {"expected", finding.expected}, {"seen", finding.seen}};
}

json ToJson(const GaveUp& given) { return {{"is", "gaveUp"}, {"reason", given.reason}}; }

json ToJson(const TableCell& cell) {
    return {{"is", "cell"},
            {"product", cell.product},
            {"language", cell.language},
            {"seen", cell.seen},
            {"right", cell.isRight}};
}

json ToJson(const ChildFault& fault) { return {{"is", "fault"}, {"text", fault.text}}; }

json ToJson(const Done&) { return {{"is", "done"}}; }

std::string Text(const json& value, const char* key) { return value.at(key).get<std::string>(); }

CallReturned ReturnedFrom(const json& value) {
    CallReturned call{Text(value, "result"), std::nullopt};
    if (value.contains("before")) {
        call.block = {value.at("before").get<std::uint32_t>(), value.at("after").get<std::uint32_t>(),
                      Text(value, "otherBytes")};
    }
    return call;
}

macplatform::Alert AlertFrom(const json& value) {
    macplatform::Alert alert;
    alert.kind =
        value.at("stop").get<bool>() ? macplatform::Alert::Kind::Stop : macplatform::Alert::Kind::Message;
    alert.message = Text(value, "message");
    alert.buttons = value.at("buttons").get<std::vector<std::string>>();
    alert.resource = value.at("resource").get<int>();
    return alert;
}

std::optional<Message> MessageFrom(const json& value) {
    const std::string is = Text(value, "is");
    if (is == "began") {
        return CallBegan{Text(value, "function"), Text(value, "arguments"), Text(value, "event")};
    }
    if (is == "returned") return ReturnedFrom(value);
    if (is == "journal") {
        return macplatform::JournalEntry{Text(value, "call"),
                                         value.at("arguments").get<std::vector<std::string>>(),
                                         Text(value, "result"), Text(value, "note")};
    }
    if (is == "alert") return AlertFrom(value);
    if (is == "exception") return ExceptionEscaped{Text(value, "type"), Text(value, "what")};
    if (is == "notLoaded") return LoadFailed{Text(value, "reason"), Text(value, "text")};
    if (is == "left") return ObjectsLeft{value.at("objects").get<std::vector<std::string>>()};
    if (is == "finding") return Finding{Text(value, "expected"), Text(value, "seen")};
    if (is == "gaveUp") return GaveUp{Text(value, "reason")};
    if (is == "cell") {
        return TableCell{value.at("product").get<std::int32_t>(), value.at("language").get<std::int32_t>(),
                         Text(value, "seen"), value.at("right").get<bool>()};
    }
    if (is == "fault") return ChildFault{Text(value, "text")};
    if (is == "done") return Done{};
    return std::nullopt;
}

} // namespace

std::string Encode(const Message& message) {
    const json value = std::visit([](const auto& one) { return ToJson(one); }, message);
    return value.dump(-1, ' ', false, json::error_handler_t::replace) + '\n';
}

std::optional<Message> Decode(std::string_view line) {
    try {
        return MessageFrom(json::parse(line));
    } catch (const json::exception&) {
        return std::nullopt;
    }
}

const char* ReasonWord(macplatform::BundleFault fault) {
    using macplatform::BundleFault;
    switch (fault) {
    case BundleFault::None:
        return "unknown";
    case BundleFault::NoBundle:
        return "no-bundle";
    case BundleFault::BrokenList:
        return "broken-property-list";
    case BundleFault::MissingKey:
        return "missing-key";
    case BundleFault::NoExecutable:
        return "no-executable";
    case BundleFault::WrongArchitecture:
        return "wrong-architecture";
    case BundleFault::CannotLoad:
        return "cannot-load";
    case BundleFault::SymbolMissing:
        return "symbol-missing";
    case BundleFault::FactoryRefused:
        return "factory-refused";
    }
    return "unknown";
}

} // namespace xcodhost
