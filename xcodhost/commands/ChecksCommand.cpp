#include "Command.h"
#include "Console.h"
#include "DisplayText.h"
#include "JsonDocument.h"
#include "SharedOptions.h"
#include "validate/Check.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <string>

namespace xcodhost {

namespace {

Json toJson(const Check& check) {
    return {
        {"id", check.id}, {"sentence", check.sentence}, {"why", check.why}, {"needs", DependenciesOf(check)}};
}

const Check& checkNamed(const std::string& id) {
    const auto& checks = AllChecks();
    const auto found =
        std::find_if(checks.begin(), checks.end(), [&](const Check& one) { return one.id == id; });
    if (found != checks.end()) return *found;
    std::vector<std::string> near;
    for (const Check& one : checks) {
        if (std::string_view(one.id).find(id) != std::string_view::npos) near.emplace_back(one.id);
    }
    throw UsageError(
        "check " + PrintableQuoted(id) + ": unknown; " +
        (near.empty() ? "xcodhost list checks lists all ids" : "similar ids: " + Join(near, ", ")));
}

std::string explanation(const Check& check, const Style& style) {
    std::string text = style.Heading(check.id) + "\n" + check.sentence + "\n\n" + check.why + '\n';
    for (const std::string& id : DependenciesOf(check)) text += "depends on  " + id + '\n';
    return text + "repeat      xcodhost validate BUNDLE --include " + check.id + '\n';
}

ExitStatus listChecks(bool isJson) {
    std::string text;
    Json document = {{"command", "list checks"}, {"checks", Json::array()}, {"exitStatus", 0}};
    for (const Check& check : AllChecks()) {
        const std::string& id = check.id;
        text += id + std::string(id.size() < 30 ? 30 - id.size() : 1, ' ') + ' ' + check.sentence + '\n';
        document["checks"].push_back(toJson(check));
    }
    WriteResult(isJson ? DumpDocument(document) : text);
    return ExitStatus::kDone;
}

struct ExplainOptions {
    std::string check; ///< An id.
    bool isJson = false;
};

ExitStatus explain(const ExplainOptions& options) {
    const Check& check = checkNamed(options.check);
    Json document = {{"command", "explain"}, {"check", toJson(check)}, {"exitStatus", 0}};
    WriteResult(options.isJson ? DumpDocument(document) : explanation(check, Style()));
    return ExitStatus::kDone;
}

Work describeList(CLI::App& parser) {
    const auto isJson = std::make_shared<bool>(false);
    CLI::App* const checks =
        parser.add_subcommand("checks", "Print the id and the requirement of every check");
    AddJson(*checks, *isJson);
    parser.require_subcommand(1);
    parser.footer("Example:\n  xcodhost list checks");
    return [isJson] { return listChecks(*isJson); };
}

Work describeExplain(CLI::App& parser) {
    const auto options = std::make_shared<ExplainOptions>();
    parser.add_option("ID", options->check, "The id of the check")->type_name("")->required();
    AddJson(parser, options->isJson);
    parser.footer("Example:\n  xcodhost explain steps.alert");
    return [options] { return explain(*options); };
}

} // namespace

const Command kListCommand = {"list", "List the checks of validate", &describeList};
const Command kExplainCommand = {"explain", "Explain the requirement of a check", &describeExplain};

} // namespace xcodhost
