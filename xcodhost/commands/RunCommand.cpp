#include "Command.h"
#include "Console.h"
#include "DisplayText.h"
#include "SharedOptions.h"
#include "run/BlockFile.h"
#include "run/BundleRun.h"
#include "run/RunReport.h"
#include "run/RunReportJson.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <optional>
#include <sstream>
#include <unistd.h>

namespace xcodhost {

namespace {

constexpr const char* kRunFooter =
    "Examples:\n"
    "  xcodhost run PostInstall.bundle --product 4900 --language 11 --volume vol\n"
    "  xcodhost run PostInstall.bundle --product 4900 --volume vol --dry-run --trace\n"
    "  xcodhost run PostInstall.bundle --product 4900 --selector 7 --direct --event pre --answers OK\n\n"
    "Exit status: 0 done, 1 the plug-in set an error bit, 2 wrong usage, 3 the bundle cannot be loaded,\n"
    "4 it crashed or let an exception out, 5 time limit, 70 a fault of the tool itself.";

struct RunOptions {
    RunPlan plan; ///< Without the parameter blocks and the choice of the buttons.
    std::optional<std::int32_t> product;
    std::int32_t language = 0;
    std::uint16_t selector = kInstallerSelector;
    std::string event = "both";
    std::optional<std::uint16_t> message;
    std::string blockFile; ///< Empty: the five values above fill the parameter blocks.
    std::string answers;   ///< The value of `--answers`.
    bool isJson = false;
};

/// Returns the messages of the blocks that the options describe: none with `--block`. Throws UsageError if
/// options contradict each other or one is missing.
std::vector<std::uint16_t> messagesFor(const RunOptions& options, const CLI::App& parser) {
    if (!options.blockFile.empty()) {
        for (const char* other : {"--product", "--language", "--selector", "--event", "--message"}) {
            if (parser.count(other) > 0)
                throw UsageError(std::string(other) + " and --block: give only one of them");
        }
        return {};
    }
    if (!options.product)
        throw UsageError("--product: missing; give a product code, or --block with a parameter block");
    if (options.message && parser.count("--event") > 0)
        throw UsageError("--event and --message: give only one of them");
    if (options.message) return {*options.message};
    if (options.event == "pre") return {kPreInstall};
    if (options.event == "post") return {kPostInstall};
    if (options.event == "both") return {kPreInstall, kPostInstall};
    throw UsageError("--event: " + PrintableQuoted(options.event) + " is not pre, post or both");
}

std::vector<std::string> splitTitles(const std::string& text) {
    std::vector<std::string> titles;
    std::stringstream in(text);
    for (std::string title; std::getline(in, title, ',');) titles.push_back(title);
    return titles;
}

AlertPolicy policyFor(const std::string& text, bool isGiven) {
    using Kind = AlertPolicy::Kind;
    if (!isGiven) return {isatty(STDIN_FILENO) == 1 ? Kind::kAsk : Kind::kFirst, {}, {}};
    if (text == "ask") return {Kind::kAsk, {}, {}};
    if (text == "desktop") return {Kind::kDesktop, {}, FindDialogPrograms()};
    if (text == "first") return {Kind::kFirst, {}, {}};
    if (text.empty())
        throw UsageError("--answers: empty; give ask, desktop, first, or the titles of buttons");
    return {Kind::kTitles, splitTitles(text), {}};
}

std::vector<ParameterBlock> blocksFor(const RunOptions& options, const std::vector<std::uint16_t>& messages) {
    std::vector<ParameterBlock> blocks;
    if (!options.blockFile.empty()) blocks.push_back(ReadBlockFile(options.blockFile));
    for (const std::uint16_t message : messages) {
        blocks.emplace_back(options.selector, message, *options.product, options.language);
    }
    const bool areSteps = std::all_of(blocks.begin(), blocks.end(), [](const ParameterBlock& block) {
        return block.Message() == kPreInstall || block.Message() == kPostInstall;
    });
    if (options.plan.isDirect && !areSteps) {
        throw UsageError("--direct: no exported function for this message; use message 2 (PreInstall) or 3 "
                         "(PostInstall)");
    }
    return blocks;
}

ExitStatus run(const RunOptions& options, const CLI::App& parser) {
    const std::vector<std::uint16_t> messages = messagesFor(options, parser);
    if (options.plan.isDryRun && options.plan.volume.empty()) {
        throw UsageError("--dry-run: --volume is missing; without --volume a run uses a scratch volume");
    }
    RunPlan plan = options.plan;
    plan.answers = policyFor(options.answers, parser.count("--answers") > 0);
    plan.blocks = blocksFor(options, messages);
    const RunResult result = RunBundle(plan);
    const Verdict verdict = VerdictOf(result);
    if (verdict.status == ExitStatus::kNotLoaded) Note(result.loadFailure->text);
    WriteResult(options.isJson ? RunReportJson(result, verdict) : RunReport(result, verdict, Style()));
    return verdict.status;
}

/// Adds the options that give the contents of the parameter block.
void describeBlock(CLI::App& parser, RunOptions& options) {
    AddInteger<std::int32_t>(parser, "--product", options.product, "Product code");
    AddInteger<std::int32_t>(parser, "--language", options.language, "Language code (default 0)");
    AddInteger<std::uint16_t>(parser, "--selector", options.selector, "Call kind (default 1000)");
    parser.add_option("--event", options.event, "Events to deliver: pre, post or both (default)")
        ->type_name("EVENT");
    AddInteger<std::uint16_t>(parser, "--message", options.message,
                              "Deliver this message only: 2 pre-install, 3 post-install, or any other");
    parser
        .add_option("--block", options.blockFile,
                    "Deliver the bytes of this file as the parameter block (at least 614 bytes)")
        ->type_name("FILE");
}

Work describeRun(CLI::App& parser) {
    const auto options = std::make_shared<RunOptions>();
    parser.add_option("BUNDLE", options->plan.bundle, "The folder of the bundle")
        ->type_name("DIR")
        ->required();
    describeBlock(parser, *options);
    parser.add_flag("--direct", options->plan.isDirect,
                    "Call the exported PreInstall and PostInstall by name");
    parser
        .add_option("--volume", options->plan.volume,
                    "Directory that stands for the startup volume (default: a scratch sample volume)")
        ->type_name("DIR");
    parser.add_flag("--dry-run", options->plan.isDryRun, "Work on a scratch copy of the volume");
    parser
        .add_option("--answers", options->answers,
                    "Who answers alerts: ask (the user, on the terminal; the default on a terminal), desktop "
                    "(the user, in a window), first (the first button; the default elsewhere), or the "
                    "titles of buttons, one for each alert, separated by commas")
        ->type_name("WHO");
    AddMac(parser);
    parser.add_flag("--trace", options->plan.hasTrace, "Print every platform call in order");
    AddTimeout(parser, options->plan.secondsPerCall);
    AddJson(parser, options->isJson);
    parser.footer(kRunFooter);
    return [options, &parser] { return run(*options, parser); };
}

} // namespace

const Command kRunCommand = {"run", "Deliver the installer's events to a bundle", &describeRun, true};

} // namespace xcodhost
