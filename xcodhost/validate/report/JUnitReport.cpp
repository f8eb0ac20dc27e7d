#include "JUnitReport.h"

#include "MarkupText.h"
#include "ValidateReport.h"

#include <cmath>

namespace xcodhost {

namespace {

using State = CheckResult::State;

/// Returns the seconds with three decimals and a decimal point in every locale.
std::string timeText(double seconds) {
    const auto milliseconds = std::llround(seconds * 1000);
    const std::string rest = std::to_string(milliseconds % 1000);
    return std::to_string(milliseconds / 1000) + '.' + std::string(3 - rest.size(), '0') + rest;
}

std::string testCase(const BundleResult& bundle, const CheckResult& result) {
    const std::string id = result.check->id;
    std::string text = "    <testcase classname=\"" + MarkupText(id.substr(0, id.find('.'))) + "\" name=\"" +
                       MarkupText(id) + "\" time=\"" + timeText(result.seconds) + "\"";
    if (result.state == State::kPassed) return text + "/>\n";
    text += ">\n";
    if (result.state == State::kNotRun) {
        text += "      <skipped message=\"" + MarkupText(result.reason) + "\"/>\n";
    } else {
        const LocatedFinding& first = result.findings.front();
        text += "      <failure message=\"" +
                MarkupText("expected " + first.expected + ", seen " + first.seen) + "\" type=\"" +
                MarkupText(id) + "\">" + MarkupText(result.check->sentence) + '\n';
        for (const std::string& line : FindingLines(result)) text += MarkupText(line) + '\n';
        text += "repeat    " + MarkupText(RepeatCommand(bundle.bundle, result)) + "</failure>\n";
    }
    return text + "    </testcase>\n";
}

std::string suite(const BundleResult& bundle) {
    double seconds = 0;
    for (const CheckResult& result : bundle.checks) seconds += result.seconds;
    std::string text = "  <testsuite name=\"" + MarkupText(bundle.bundle) + "\" tests=\"" +
                       std::to_string(bundle.checks.size()) + "\" failures=\"" +
                       std::to_string(bundle.Count(State::kFailed)) + "\" errors=\"0\" skipped=\"" +
                       std::to_string(bundle.Count(State::kNotRun)) + "\" time=\"" + timeText(seconds) +
                       "\">\n";
    for (const CheckResult& result : bundle.checks) text += testCase(bundle, result);
    return text + "  </testsuite>\n";
}

} // namespace

std::string JUnitReport(const std::vector<BundleResult>& bundles) {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"xcodhost validate\">\n";
    for (const BundleResult& bundle : bundles) text += suite(bundle);
    return text + "</testsuites>\n";
}

} // namespace xcodhost
