#include "RunReportJson.h"

#include "JsonDocument.h"
#include "contract/PluginContract.h"

#include <csignal>
#include <string>

namespace xcodhost {

namespace {

Json toJson(const AlertRecord& record) {
    const bool isStop = record.alert.kind == macplatform::Alert::Kind::kStop;
    Json value;
    value["kind"] = isStop ? "stop" : "message";
    value["message"] = record.alert.message;
    value["buttons"] = record.alert.buttons;
    value["resource"] = isStop ? Json(record.alert.resource) : Json();
    value["answer"] = record.button < 0 ? Json() : Json(record.Title());
    value["note"] = record.note;
    return value;
}

Json toJson(const CallRecord& call, bool hasTrace) {
    Json value;
    value["function"] = call.call.function;
    value["arguments"] = call.call.arguments;
    value["event"] = call.call.event.empty() ? Json() : Json(call.call.event);
    value["returned"] = call.returned.has_value();
    if (call.returned && call.returned->block) {
        const BlockEffect& block = *call.returned->block;
        value["errorFlags"] = {{"before", block.errorFlagsBefore}, {"after", block.errorFlagsAfter}};
        value["otherBytesChanged"] = block.otherBytes.empty() ? Json() : Json(block.otherBytes);
    }
    value["alerts"] = Json::array();
    for (const AlertRecord& alert : call.alerts) value["alerts"].push_back(toJson(alert));
    if (!hasTrace) return value;
    value["platformCalls"] = Json::array();
    for (const auto& entry : call.platformCalls) {
        value["platformCalls"].push_back({{"call", entry.call},
                                          {"arguments", entry.arguments},
                                          {"result", entry.result},
                                          {"note", entry.note}});
    }
    return value;
}

Json optionalJson(const std::optional<macplatform::PropertyValue>& value) {
    return value ? ValueJson(*value) : Json();
}

Json endJson(const RunResult& result) {
    switch (result.end.kind) {
    case ChildEnd::Kind::kSignalled: {
        const char* name = sigabbrev_np(result.end.code);
        return {{"kind", "signal"},
                {"signal", name ? "SIG" + std::string(name) : std::to_string(result.end.code)}};
    }
    case ChildEnd::Kind::kExited: return {{"kind", "exit"}, {"code", result.end.code}};
    case ChildEnd::Kind::kTimeLimitExceeded: return {{"kind", "time-limit"}, {"seconds", result.end.seconds}};
    case ChildEnd::Kind::kReportLimitExceeded:
    case ChildEnd::Kind::kOutputLimitExceeded: return {{"kind", "broken-report"}};
    case ChildEnd::Kind::kFinished: break;
    }
    if (result.exception) {
        return {{"kind", "exception"}, {"type", result.exception->type}, {"what", result.exception->what}};
    }
    if (result.loadFailure) {
        return {{"kind", "not-loaded"},
                {"reason", result.loadFailure->reason},
                {"text", result.loadFailure->text}};
    }
    return {{"kind", "finished"}};
}

Json toJson(const Changes& changes) {
    Json value = {{"preferences", Json::array()}, {"finderFlags", Json::array()}, {"files", Json::array()}};
    for (const PreferenceChange& change : changes.preferences) {
        value["preferences"].push_back({{"domain", change.domain},
                                        {"key", change.key},
                                        {"before", optionalJson(change.before)},
                                        {"after", optionalJson(change.after)}});
    }
    for (const FinderFlagChange& change : changes.finderFlags) {
        Json one = FlagJson(change.flag);
        one["path"] = change.path;
        one["before"] = change.before;
        one["after"] = change.after;
        value["finderFlags"].push_back(std::move(one));
    }
    for (const FileChange& change : changes.files) {
        value["files"].push_back({{"path", change.path}, {"change", change.what}});
    }
    return value;
}

} // namespace

std::string RunReportJson(const RunResult& result, const Verdict& verdict) {
    Json document;
    document["command"] = "run";
    document["bundle"] = result.bundle;
    document["volume"] = result.volume.empty() ? Json() : Json(result.volume);
    document["dryRun"] = result.isDryRun;
    document["calls"] = Json::array();
    for (const CallRecord& call : result.calls) document["calls"].push_back(toJson(call, result.hasTrace));
    document["end"] = endJson(result);
    document["changes"] = toJson(result.changes);
    document["problems"] = result.problems;
    document["objectsLeft"] = result.objectsLeft;
    document["verdict"] = verdict.text;
    document["exitStatus"] = static_cast<int>(verdict.status);
    return DumpDocument(document);
}

} // namespace xcodhost
