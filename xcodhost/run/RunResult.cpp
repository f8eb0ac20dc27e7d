#include "RunResult.h"

#include "DisplayText.h"

#include <csignal>
#include <cstring>

namespace xcodhost {

namespace {

std::string LastCall(const RunResult& result) {
    return result.calls.empty() ? "before any of its code ran" : "in " + result.calls.back().Describe();
}

std::string ExceptionText(const ExceptionEscaped& exception) {
    std::string text = Printable(exception.type);
    if (!exception.what.empty()) text += ' ' + PrintableQuoted(exception.what);
    return text;
}

Verdict JudgeEffects(const RunResult& result) {
    for (const CallRecord& call : result.calls) {
        if (call.NewErrorBits() == 0) continue;
        return {ExitStatus::Failed, "FAIL error bit set by " + call.call.event + " (" +
                                        Counted(result.changes.Count(), "change") + ")"};
    }
    return {ExitStatus::Done, "DONE " + Counted(result.changes.Count(), "change")};
}

} // namespace

std::string SignalName(int number) {
    const char* abbreviation = sigabbrev_np(number);
    const char* description = sigdescr_np(number);
    std::string name = abbreviation ? std::string("SIG") + abbreviation : "signal " + std::to_string(number);
    if (description) name += std::string(" (") + description + ')';
    return name;
}

std::string AlertRecord::Title() const {
    if (answer < 0) return {};
    const auto place = static_cast<std::size_t>(answer);
    return place < alert.buttons.size() ? alert.buttons[place] : "OK";
}

std::string CallRecord::Describe() const {
    return Printable(call.function) + '(' + Printable(call.arguments) + ')';
}

std::uint32_t CallRecord::NewErrorBits() const {
    if (!returned || !returned->block) return 0;
    return returned->block->errorFlagsAfter & ~returned->block->errorFlagsBefore;
}

Verdict Judge(const RunResult& result) {
    switch (result.end.kind) {
    case ChildEnd::Kind::Signalled:
        return {ExitStatus::Crashed, "FAIL crashed " + LastCall(result) + ": " + SignalName(result.end.code)};
    case ChildEnd::Kind::Exited:
        return {ExitStatus::Crashed, "FAIL ended the process " + LastCall(result) + ": exit status " +
                                         std::to_string(result.end.code)};
    case ChildEnd::Kind::OverTime:
        return {ExitStatus::TimeLimit,
                "FAIL no return within " + Seconds(result.end.seconds) + ' ' + LastCall(result)};
    case ChildEnd::Kind::OverReport:
    case ChildEnd::Kind::OverOutput:
        return {ExitStatus::Crashed, "FAIL flooded or broke the report to the host " + LastCall(result)};
    case ChildEnd::Kind::Finished:
        break;
    }
    if (result.exception) {
        return {ExitStatus::Crashed, "FAIL exception " + ExceptionText(*result.exception) + " left " +
                                         result.calls.back().Describe()};
    }
    if (result.loadFailure) {
        return {ExitStatus::NotLoaded, "FAIL not loaded (" + result.loadFailure->reason + ")"};
    }
    return JudgeEffects(result);
}

} // namespace xcodhost
