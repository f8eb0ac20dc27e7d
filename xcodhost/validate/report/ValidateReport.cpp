#include "ValidateReport.h"

#include "DisplayText.h"
#include "JsonDocument.h"

#include <macplatform/Bundles.h>

#include <algorithm>

namespace xcodhost {

namespace {

using State = CheckResult::State;

std::string shellQuoted(const std::string& text) {
    const char unquoted[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./-+,:=@%";
    if (!text.empty() && text.find_first_not_of(unquoted) == std::string::npos && text.front() != '-')
        return text;
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + '\'';
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(text.size() < width ? width - text.size() : 1, ' ');
}

std::string traceText(const CheckResult& result) {
    std::string text;
    for (const CheckStep& step : result.trace) {
        text += "           " + padded(step.kind, 9) + ' ' + Printable(step.text) + '\n';
    }
    return text;
}

std::string checkText(const BundleResult& bundle, const CheckResult& result, const Style& style) {
    const std::string line = padded(result.check->id, 30) + ' ' + result.check->sentence + '\n';
    if (result.state == State::kPassed) return style.Good("pass     ") + line + traceText(result);
    if (result.state == State::kNotRun)
        return "not run  " + padded(result.check->id, 30) + ' ' + Printable(result.reason) + '\n' +
               traceText(result);
    std::string text = style.Bad("FAIL     ") + line + traceText(result);
    for (const std::string& detail : FindingLines(result)) text += "           " + detail + '\n';
    return text + "           repeat    " + RepeatCommand(bundle.bundle, result) + '\n';
}

std::string bundleText(const BundleResult& bundle, const Style& style) {
    std::string text = style.Heading("bundle  " + Printable(bundle.bundle)) + '\n';
    for (const CheckResult& result : bundle.checks) text += checkText(bundle, result, style);
    const std::size_t notRun = bundle.Count(State::kNotRun);
    if (notRun > 0) text += Counted(notRun, "check") + " not run\n";
    return text;
}

Json toJson(const BundleResult& bundle, const CheckResult& result) {
    Json value;
    value["id"] = result.check->id;
    value["sentence"] = result.check->sentence;
    value["state"] = StateName(result.state);
    value["findings"] = Json::array();
    for (const LocatedFinding& finding : result.findings) {
        value["findings"].push_back({{"call", finding.call.empty() ? Json() : Json(finding.call)},
                                     {"expected", finding.expected},
                                     {"seen", finding.seen}});
    }
    value["moreFindings"] = result.moreFindings;
    for (const CheckStep& step : result.trace) {
        value["trace"].push_back({{"step", step.kind}, {"text", step.text}});
    }
    value["reason"] = result.reason.empty() ? Json() : Json(result.reason);
    value["output"] = result.output;
    value["seconds"] = result.seconds;
    value["repeat"] = RepeatCommand(bundle.bundle, result);
    return value;
}

Json toJson(const BundleResult& bundle) {
    Json value = {{"bundle", bundle.bundle}, {"checks", Json::array()}, {"languages", Json::array()}};
    for (const CheckResult& result : bundle.checks) value["checks"].push_back(toJson(bundle, result));
    for (const TableCell& cell : bundle.table) {
        value["languages"].push_back({{"product", cell.product},
                                      {"language", cell.language},
                                      {"stored", cell.seen},
                                      {"right", cell.isRight}});
    }
    const ValidationVerdict verdict = VerdictOf(&bundle, 1);
    value["verdict"] = verdict.text;
    value["exitStatus"] = static_cast<int>(verdict.status);
    return value;
}

} // namespace

std::string ValidateReport(const std::vector<BundleResult>& bundles, const ValidationVerdict& verdict,
                           const Style& style) {
    std::string text;
    for (const BundleResult& bundle : bundles) {
        text += bundleText(bundle, style);
        if (bundles.size() > 1) text += VerdictOf(&bundle, 1).text + "\n\n";
    }
    const bool isGood = verdict.status == ExitStatus::kDone;
    return text + (isGood ? style.Good(verdict.text) : style.Bad(verdict.text)) + '\n';
}

std::string ValidateReportJson(const std::vector<BundleResult>& bundles, const ValidationVerdict& verdict) {
    Json document = {{"command", "validate"}, {"bundles", Json::array()}};
    for (const BundleResult& bundle : bundles) document["bundles"].push_back(toJson(bundle));
    document["verdict"] = verdict.text;
    document["exitStatus"] = static_cast<int>(verdict.status);
    return DumpDocument(document);
}

std::vector<std::string> FindingLines(const CheckResult& result) {
    std::vector<std::string> lines;
    std::string call;
    for (const LocatedFinding& finding : result.findings) {
        if (finding.call != call) lines.push_back("in        " + finding.call);
        call = finding.call;
        lines.push_back("expected  " + Printable(finding.expected));
        lines.push_back("seen      " + Printable(finding.seen));
    }
    if (result.moreFindings > 0) lines.push_back("and " + std::to_string(result.moreFindings) + " more");
    if (!result.output.empty()) lines.push_back("printed   " + PrintableQuoted(result.output));
    return lines;
}

std::string RepeatCommand(const std::string& bundle, const CheckResult& result) {
    const char* const mac = macplatform::PrefersMacCode() ? " --mac" : "";
    return "xcodhost validate " + shellQuoted(bundle) + mac + " --include " + result.check->id;
}

const char* StateName(CheckResult::State state) {
    return state == State::kPassed ? "passed" : state == State::kFailed ? "failed" : "not run";
}

} // namespace xcodhost
