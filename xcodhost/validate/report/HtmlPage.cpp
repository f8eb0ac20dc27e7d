#include "HtmlPage.h"

#include "DisplayText.h"
#include "MarkupText.h"
#include "ValidateReport.h"
#include "contract/ProductContract.h"

#include <algorithm>
#include <utility>

namespace xcodhost {

namespace {

using State = CheckResult::State;

constexpr const char* kStyle = R"(
body { font: 15px/1.45 system-ui, sans-serif; margin: 2rem auto; max-width: 70rem; padding: 0 1rem;
    color: #1c1c1e; background: #fff }
h1 { font-size: 1.5rem }
h2 { font-size: 1.2rem; margin-top: 2.2rem; border-bottom: 1px solid #d0d0d5; padding-bottom: .2rem }
h3 { font-size: 1rem; margin: 1.6rem 0 .4rem }
.verdict { font-size: 1.15rem; font-weight: 600; padding: .7rem 1rem; border-radius: .4rem; margin: 1rem 0 }
.verdict.passed { background: #e3f5e6; color: #14532d }
.verdict.failed { background: #fde8e8; color: #7f1d1d }
table { border-collapse: collapse; width: 100%; margin: .5rem 0 }
th, td { text-align: left; padding: .3rem .6rem; border-bottom: 1px solid #e5e5ea; vertical-align: top }
th { background: #f5f5f7; font-weight: 600 }
td.id, code, pre { font-family: ui-monospace, monospace; font-size: .88em }
td.id { white-space: nowrap }
td.value { overflow-wrap: anywhere }
.grid td, .grid th { text-align: center }
.grid th:first-child { text-align: left }
.mark { white-space: nowrap; font-weight: 600 }
.passed .mark, td.right { color: #15803d }
.failed .mark, td.wrong { color: #b91c1c }
.failed, td.wrong { background: #fff5f5 }
.skipped .mark { color: #6b7280 }
pre { white-space: pre-wrap; overflow-wrap: anywhere; background: #f5f5f7; padding: .6rem; border-radius: .3rem;
    margin: .4rem 0 }
@media (prefers-color-scheme: dark) {
    body { background: #1c1c1e; color: #f2f2f7 }
    th, pre { background: #2c2c2e }
    th, td { border-color: #3a3a3c }
    h2 { border-color: #48484a }
    .failed, td.wrong { background: #3b1f1f }
    .verdict.passed { background: #14352a; color: #bbf7d0 }
    .verdict.failed { background: #4c1d1d; color: #fecaca }
    .passed .mark, td.right { color: #4ade80 }
    .failed .mark, td.wrong { color: #f87171 }
}
@media print { body { margin: 0; max-width: none } }
)";

std::string element(const std::string& tag, const std::string& content) {
    return '<' + tag + '>' + content + "</" + tag.substr(0, tag.find(' ')) + ">\n";
}

std::string checkRow(const BundleResult& bundle, const CheckResult& result) {
    const char* const kind = result.state == State::kPassed   ? "passed"
                             : result.state == State::kFailed ? "failed"
                                                              : "skipped";
    std::string text = MarkupText(result.check->sentence);
    if (result.state == State::kFailed) {
        std::string lines;
        for (const std::string& line : FindingLines(result)) lines += MarkupText(line) + '\n';
        text += "<p>" + MarkupText(result.check->why) + "</p><pre>" + lines + "repeat    " +
                MarkupText(RepeatCommand(bundle.bundle, result)) + "</pre>";
    } else if (result.state == State::kNotRun) {
        text += " (" + MarkupText(result.reason) + ')';
    }
    return std::string("<tr class=\"") + kind + "\"><td class=\"mark\">" + StateName(result.state) +
           "</td><td class=\"id\">" + MarkupText(result.check->id) + "</td><td>" + text + "</td></tr>\n";
}

/// Lists failed checks first, then checks that were not run, then passed checks.
std::string checkTable(const BundleResult& bundle) {
    std::string rows;
    for (const State state : {State::kFailed, State::kNotRun, State::kPassed}) {
        for (const CheckResult& result : bundle.checks) {
            if (result.state == state) rows += checkRow(bundle, result);
        }
    }
    return element("h3", "Checks") +
           element("table", "<tr><th>Result</th><th>Check</th><th>Claim</th></tr>\n" + rows);
}

std::string languageCell(const BundleResult& bundle, std::int32_t product, std::int32_t language) {
    const auto cell = std::find_if(bundle.table.begin(), bundle.table.end(), [&](const TableCell& one) {
        return one.product == product && one.language == language;
    });
    if (cell == bundle.table.end()) return "<td>-</td>";
    return (cell->isRight ? "<td class=\"right\">" : "<td class=\"wrong\">") + MarkupText(cell->seen) +
           (cell->isRight ? "" : " &#x2717;") + "</td>";
}

std::string languageTable(const BundleResult& bundle) {
    if (bundle.table.empty()) return {};
    std::string rows = "<tr><th>Product</th>";
    for (const LanguageContract& language : kLanguages)
        rows += "<th>" + std::to_string(language.code) + "</th>";
    rows += "</tr>\n";
    for (const ProductContract& product : kProducts) {
        rows += "<tr><th>" + std::to_string(product.code) + ' ' + MarkupText(product.shortName) + "</th>";
        for (const LanguageContract& language : kLanguages)
            rows += languageCell(bundle, product.code, language.code);
        rows += "</tr>\n";
    }
    return element("h3", "Language stored, by product and language code") +
           element("table class=\"grid\"", rows);
}

std::string changeRow(const std::string& place, const std::string& before, const std::string& after) {
    return "<tr><td class=\"value\">" + MarkupText(place) + "</td><td class=\"value\">" + MarkupText(before) +
           "</td><td class=\"value\">" + MarkupText(after) + "</td></tr>\n";
}

std::string changeTable(const Changes& changes) {
    std::string rows;
    for (const PreferenceChange& change : changes.preferences) {
        rows += changeRow(change.domain + ' ' + change.key, Describe(change.before), Describe(change.after));
    }
    for (const FinderFlagChange& change : changes.finderFlags) {
        rows +=
            changeRow(change.path + ": " + Describe(change.flag), DescribeSetting(change.flag, change.before),
                      DescribeSetting(change.flag, change.after));
    }
    for (const FileChange& change : changes.files) rows += changeRow(change.path, "", change.what);
    if (rows.empty()) rows = "<tr><td colspan=\"3\">nothing changed</td></tr>\n";
    return element("table", "<tr><th>Where</th><th>Before</th><th>After</th></tr>\n" + rows);
}

std::string volumeTables(const std::vector<Installation>& installations) {
    if (installations.empty()) return {};
    std::string text = element("h3", "The volume before and after an installation in French");
    std::string attribute = " open";
    for (const Installation& installation : installations) {
        const std::string title = std::to_string(installation.product.code) + ' ' +
                                  installation.product.shortName + ": " +
                                  Counted(installation.changes.Count(), "change");
        text += element("details" + std::exchange(attribute, {}),
                        element("summary", MarkupText(title)) + changeTable(installation.changes));
    }
    return text;
}

std::string verdictBanner(const ValidationVerdict& verdict) {
    const char* const kind = verdict.status == ExitStatus::kDone ? "passed" : "failed";
    return std::string("<p class=\"verdict ") + kind + "\">" + MarkupText(verdict.text) + "</p>\n";
}

} // namespace

std::string HtmlPage(const std::vector<BundleResult>& bundles, const ValidationVerdict& verdict) {
    std::string body = element("h1", "Plug-in validation") + verdictBanner(verdict);
    for (const BundleResult& bundle : bundles) {
        body += element("h2", MarkupText(bundle.bundle));
        if (bundles.size() > 1) body += verdictBanner(VerdictOf(&bundle, 1));
        body += checkTable(bundle) + languageTable(bundle) + volumeTables(bundle.installations);
    }
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           MarkupText(verdict.text) + " - plug-in validation</title>\n<style>" + kStyle +
           "</style>\n</head>\n<body>\n" + body + "</body>\n</html>\n";
}

} // namespace xcodhost
