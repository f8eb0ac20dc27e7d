#include "RunResult.h"

#include "DisplayText.h"

#include <csignal>
#include <cstring>

namespace xcodhost {

namespace {

std::string lastCall(const RunResult& result) {
    return result.calls.empty() ? "before any of its code ran" : "in " + result.calls.back().Describe();
}

std::string exceptionText(const ExceptionEscaped& exception) {
    std::string text = Printable(exception.type);
    if (!exception.what.empty()) text += ' ' + PrintableQuoted(exception.what);
    return text;
}

Verdict judgeEffects(const RunResult& result) {
    for (const CallRecord& call : result.calls) {
        if (call.NewErrorBits() == 0) continue;
        return {ExitStatus::kFailed, "FAIL error bit set by " + call.call.event + " (" +
                                         Counted(result.changes.Count(), "change") + ")"};
    }
    return {ExitStatus::kDone, "DONE " + Counted(result.changes.Count(), "change")};
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
    if (button < 0) return {};
    const auto place = static_cast<std::size_t>(button);
    return place < alert.buttons.size() ? alert.buttons[place] : "OK";
}

std::string CallRecord::Describe() const {
    return Printable(call.function) + '(' + Printable(call.arguments) + ')';
}

std::uint32_t CallRecord::NewErrorBits() const {
    if (!returned || !returned->block) return 0;
    return returned->block->errorFlagsAfter & ~returned->block->errorFlagsBefore;
}

Verdict VerdictOf(const RunResult& result) {
    switch (result.end.kind) {
    case ChildEnd::Kind::kSignalled:
        return {ExitStatus::kCrashed,
                "FAIL crashed " + lastCall(result) + ": " + SignalName(result.end.code)};
    case ChildEnd::Kind::kExited:
        return {ExitStatus::kCrashed, "FAIL ended the process " + lastCall(result) + ": exit status " +
                                          std::to_string(result.end.code)};
    case ChildEnd::Kind::kTimeLimitExceeded:
        return {ExitStatus::kTimeLimit,
                "FAIL no return within " + Seconds(result.end.seconds) + ' ' + lastCall(result)};
    case ChildEnd::Kind::kReportLimitExceeded:
    case ChildEnd::Kind::kOutputLimitExceeded:
        return {ExitStatus::kCrashed, "FAIL sent too much or invalid data to the host " + lastCall(result)};
    case ChildEnd::Kind::kFinished: break;
    }
    if (result.exception) {
        return {ExitStatus::kCrashed, "FAIL exception " + exceptionText(*result.exception) +
                                          " escaped from " + result.calls.back().Describe()};
    }
    if (result.loadFailure) {
        return {ExitStatus::kNotLoaded, "FAIL not loaded (" + result.loadFailure->reason + ")"};
    }
    return judgeEffects(result);
}

} // namespace xcodhost
