#include "Options.h"

#include "DisplayText.h"
#include "ExitStatus.h"
#include "contract/PluginContract.h"

#include <CLI/CLI.hpp>
#include <macplatform/Bundles.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string_view>
#include <unistd.h>

#ifndef XCODHOST_VERSION
#error "the build files must define the version"
#endif

namespace xcodhost {

namespace {

constexpr double kLongestLimit = 86400;

constexpr const char* kRunFooter =
    "Examples:\n"
    "  xcodhost run PostInstall.bundle --product 4900 --language 11 --volume vol\n"
    "  xcodhost run PostInstall.bundle --product 4900 --volume vol --dry-run --trace\n"
    "  xcodhost run PostInstall.bundle --product 4900 --selector 7 --direct --event pre --answers OK\n\n"
    "Exit status: 0 done, 1 the plug-in set an error bit, 2 wrong usage, 3 the bundle cannot be loaded,\n"
    "4 it crashed or let an exception out, 5 time limit, 70 a fault of the tool itself.";

/// The values of the options of `run` before they are checked together.
struct RunArguments {
    RunOptions options;
    std::optional<std::uint16_t> message;
    std::string event = "both";
    std::string answers; ///< The value of `--answers`.
    std::vector<CLI::Option*> excludedByBlock;
};

/// Parses a number that is decimal, or hexadecimal after "0x". Throws UsageError if the text is not a number
/// or the number is below `lowest` or does not fit the type.
template <typename Integer, Integer lowest = std::numeric_limits<Integer>::min()>
Integer parseInteger(const std::string& name, const std::string& text) {
    std::string_view digits = text;
    const bool isNegative = !digits.empty() && digits.front() == '-';
    if (isNegative) digits.remove_prefix(1);
    const bool isHex = digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
    if (isHex) digits.remove_prefix(2);
    std::int64_t value = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, isHex ? 16 : 10);
    const bool isWhole =
        error == std::errc() && end == digits.data() + digits.size() && digits.front() != '-';
    if (isNegative) value = -value;
    if (!isWhole || value < lowest || value > std::numeric_limits<Integer>::max()) {
        throw UsageError(name + ": " + PrintableQuoted(text) + " is not a whole number from " +
                         std::to_string(lowest) + " to " +
                         std::to_string(std::numeric_limits<Integer>::max()));
    }
    return static_cast<Integer>(value);
}

double parseSeconds(const std::string& name, const std::string& text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !(value > 0) || value > kLongestLimit) {
        throw UsageError(name + ": " + PrintableQuoted(text) +
                         " is not a number of seconds above 0 and up to 86400");
    }
    return value;
}

template <typename Target, typename Parse>
CLI::Option* addNumber(CLI::App& app, const std::string& name, Target& target, Parse parse,
                       const std::string& description) {
    const auto accept = [&target, parse, name](const std::string& text) { target = parse(name, text); };
    return app.add_option_function<std::string>(name, accept, description)->type_name("N");
}

std::vector<std::uint16_t> messagesFor(const RunArguments& arguments) {
    if (arguments.message) return {*arguments.message};
    if (arguments.event == "pre") return {kPreInstall};
    if (arguments.event == "post") return {kPostInstall};
    if (arguments.event == "both") return {kPreInstall, kPostInstall};
    throw UsageError("--event: " + PrintableQuoted(arguments.event) + " is not pre, post or both");
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

RunOptions checked(RunArguments& arguments, const CLI::App& run) {
    RunOptions& options = arguments.options;
    if (!options.blockFile.empty()) {
        for (const CLI::Option* option : arguments.excludedByBlock) {
            if (option->count() > 0)
                throw UsageError(option->get_name() + " and --block: give only one of them");
        }
    } else {
        if (!options.product)
            throw UsageError("--product: missing; give a product code, or --block with a parameter block");
        if (arguments.message && run.count("--event") > 0) {
            throw UsageError("--event and --message: give only one of them");
        }
        options.messages = messagesFor(arguments);
    }
    if (options.plan.isDryRun && options.plan.volume.empty()) {
        throw UsageError("--dry-run: --volume is missing; without --volume a run uses a scratch volume");
    }
    options.plan.answers = policyFor(arguments.answers, run.count("--answers") > 0);
    return options;
}

/// Adds the options that give the contents of the parameter block.
void describeBlock(CLI::App& run, RunArguments& arguments) {
    RunOptions& options = arguments.options;
    auto* product = addNumber(run, "--product", options.product, parseInteger<std::int32_t>, "Product code");
    auto* language = addNumber(run, "--language", options.language, parseInteger<std::int32_t>,
                               "Language code (default 0)");
    auto* selector = addNumber(run, "--selector", options.selector, parseInteger<std::uint16_t>,
                               "Call kind (default 1000)");
    auto* event =
        run.add_option("--event", arguments.event, "Events to deliver: pre, post or both (default)");
    event->type_name("EVENT");
    auto* message = addNumber(run, "--message", arguments.message, parseInteger<std::uint16_t>,
                              "Deliver this message only: 2 pre-install, 3 post-install, or any other");
    arguments.excludedByBlock = {product, language, selector, event, message};
    run.add_option("--block", options.blockFile,
                   "Deliver the bytes of this file as the parameter block (at least 614 bytes)")
        ->type_name("FILE");
}

/// Adds the flag that selects the executable for the Mac. The selection is a state of the platform, which the
/// child processes inherit.
void addMacFlag(CLI::App& app) {
    const auto prefer = [] {
        if (!macplatform::SetPrefersMacCode(true))
            throw UsageError(
                "--mac: this build cannot run code for the Mac; use the 32-bit build of the tool");
    };
    app.add_flag_callback("--mac", prefer,
                          "Load the bundle's executable for the Mac instead of the one for Linux");
}

void describeRun(CLI::App& run, RunArguments& arguments) {
    RunOptions& options = arguments.options;
    run.add_option("BUNDLE", options.plan.bundle, "The folder of the bundle")->type_name("DIR")->required();
    describeBlock(run, arguments);
    run.add_flag("--direct", options.plan.isDirect, "Call the exported PreInstall and PostInstall by name");
    run.add_option("--volume", options.plan.volume,
                   "Directory that stands for the startup volume (default: a scratch sample volume)")
        ->type_name("DIR");
    run.add_flag("--dry-run", options.plan.isDryRun, "Work on a scratch copy of the volume");
    run.add_option("--answers", arguments.answers,
                   "Who answers alerts: ask (the user, on the terminal; the default on a terminal), desktop "
                   "(the user, in "
                   "a window), first (the first button; the default elsewhere), or the titles of buttons, "
                   "one for each "
                   "alert, separated by commas")
        ->type_name("WHO");
    addMacFlag(run);
    run.add_flag("--trace", options.plan.hasTrace, "Print every platform call in order");
    addNumber(run, "--timeout", options.plan.secondsPerCall, parseSeconds,
              "Time limit of one call in seconds (default 10)");
    run.add_flag("--json", options.isJson, "Print one JSON document");
    run.footer(kRunFooter);
}

void describeValidate(CLI::App& validate, ValidateOptions& options) {
    validate.add_option("BUNDLE", options.bundles, "The folders of one or more bundles")
        ->type_name("DIR")
        ->required();
    validate
        .add_option("--include", options.include,
                    "Run these checks only: ids, groups such as steps, or shell patterns such as 'steps.*'")
        ->type_name("ID");
    validate.add_option("--exclude", options.exclude, "Do not run these checks")->type_name("ID");
    addMacFlag(validate);
    validate.add_flag("--trace", options.hasTrace, "Print every step and expectation of the checks in order");
    validate.add_flag("--json", options.isJson, "Print one JSON document");
    validate.add_option("--junit", options.junitFile, "Write the results for a build server to this file")
        ->type_name("FILE");
    validate.add_option("--html", options.htmlFile, "Write one page for a browser to this file")
        ->type_name("FILE");
    addNumber(validate, "--timeout", options.secondsPerCall, parseSeconds,
              "Time limit of one call in seconds (default 10); a check may take twenty times as long");
    addNumber(validate, "--jobs", options.atOnce, parseInteger<std::uint8_t, 1>,
              "Number of checks that run at the same time (default: the number of processors)");
    validate.footer(
        "Examples:\n"
        "  xcodhost validate PostInstall.bundle\n"
        "  xcodhost validate PostInstall.bundle --include steps --exclude steps.answer\n"
        "  xcodhost validate PostInstall.bundle --junit results.xml --html results.html\n\n"
        "Exit status: 0 all checks passed, 1 a check failed, 2 wrong usage, 3 the bundle cannot be loaded,\n"
        "4 it crashed or let an exception out, 5 time limit, 70 a fault of the tool itself.\n"
        "If several checks fail, the first of them decides.");
}

void describeList(CLI::App& list, ListChecksOptions& options) {
    CLI::App* const checks = list.add_subcommand("checks", "Print the id and the requirement of every check");
    checks->add_flag("--json", options.isJson, "Print one JSON document");
    list.require_subcommand(1);
    list.footer("Example:\n  xcodhost list checks");
}

void describeExplain(CLI::App& explain, ExplainOptions& options) {
    explain.add_option("ID", options.check, "The id of the check")->type_name("")->required();
    explain.add_flag("--json", options.isJson, "Print one JSON document");
    explain.footer("Example:\n  xcodhost explain steps.alert");
}

void describeShow(CLI::App& show, ShowOptions& options) {
    show.add_option("--volume", options.volume, "Directory that stands for the startup volume")
        ->type_name("DIR")
        ->required();
    show.add_flag("--json", options.isJson, "Print one JSON document");
    show.footer("Example:\n  xcodhost show --volume vol");
}

void describeVolume(CLI::App& volume, VolumeOptions& options) {
    volume.add_option("DIR", options.folder, "A new directory, an empty one, or a sample volume to complete")
        ->type_name("")
        ->required();
    auto* status = volume.add_option_function<std::string>(
        "--status", [&options](const std::string& text) { options.sample.status = text; },
        "Contents of the updater's status file (default UpdatesEnabled; '' for an empty file)");
    volume
        .add_flag_callback(
            "--no-status", [&options] { options.sample.status.reset(); }, "Make no status file")
        ->excludes(status);
    volume.add_flag_callback(
        "--no-folder", [&options] { options.sample.hasFolder = false; }, "Make no /Applications/Korvane");
    volume.add_flag_callback(
        "--no-icon", [&options] { options.sample.hasIcon = false; }, "Make no icon file in that folder");
    volume.add_flag("--json", options.isJson, "Print one JSON document");
    volume.footer("Examples:\n"
                  "  xcodhost volume vol\n"
                  "  xcodhost volume vol --status 'UpdatesDisabled' --no-icon");
}

void describeInfo(CLI::App& info, InfoOptions& options) {
    info.add_option("BUNDLE", options.bundle, "The folder of the bundle")->type_name("DIR")->required();
    info.add_flag("--json", options.isJson, "Print one JSON document");
    info.footer("Example:\n  xcodhost info PostInstall.bundle");
}

/// Adds a command. `describe` adds its options when the parser has found the command, so that only the
/// options of one command are made.
template <typename Describe>
CLI::App* addCommand(CLI::App& app, const char* name, const char* summary, Describe describe) {
    CLI::App* const command = app.add_subcommand(name, summary);
    command->preparse_callback([command, describe](std::size_t) { describe(*command); });
    return command;
}

/// Returns the error of the parser as one line.
UsageError fromParser(const CLI::ParseError& error) {
    std::string text = error.what();
    for (char& c : text) {
        if (c == '\n') c = ' ';
    }
    return UsageError(text + "; see xcodhost --help");
}

} // namespace

Command ParseCommandLine(int argc, const char* const* argv) {
    CLI::App app(
        "Loads an installer plug-in as the installer does, delivers events to it, and reports its effects.\n"
        "A directory stands for the startup volume.",
        "xcodhost");
    app.set_version_flag("--version", "xcodhost " XCODHOST_VERSION);
    app.require_subcommand(1);
    RunArguments runArguments;
    ShowOptions showOptions;
    ValidateOptions validateOptions;
    VolumeOptions volumeOptions;
    InfoOptions infoOptions;
    ListChecksOptions listOptions;
    ExplainOptions explainOptions;
    CLI::App* const run = addCommand(app, "run", "Deliver the installer's events to a bundle",
                                     [&](CLI::App& command) { describeRun(command, runArguments); });
    CLI::App* const validate =
        addCommand(app, "validate", "Check bundles against the plug-in contract",
                   [&](CLI::App& command) { describeValidate(command, validateOptions); });
    CLI::App* const show = addCommand(app, "show", "Print the preferences and Finder flags on a volume",
                                      [&](CLI::App& command) { describeShow(command, showOptions); });
    CLI::App* const volume = addCommand(app, "volume", "Make or complete a sample startup volume",
                                        [&](CLI::App& command) { describeVolume(command, volumeOptions); });
    addCommand(app, "info", "Print the contents of a bundle without loading its code",
               [&](CLI::App& command) { describeInfo(command, infoOptions); });
    CLI::App* const list = addCommand(app, "list", "List the checks of validate",
                                      [&](CLI::App& command) { describeList(command, listOptions); });
    CLI::App* const explain =
        addCommand(app, "explain", "Explain the requirement of a check",
                   [&](CLI::App& command) { describeExplain(command, explainOptions); });
    app.footer("xcodhost COMMAND --help prints the options of a command, and examples.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) {
        std::ostringstream out;
        app.exit(request, out, out);
        return HelpText{out.str()};
    } catch (const CLI::ParseError& error) {
        throw fromParser(error);
    }
    if (run->parsed()) return checked(runArguments, *run);
    if (validate->parsed()) return validateOptions;
    if (list->parsed()) return listOptions;
    if (explain->parsed()) return explainOptions;
    if (show->parsed()) return showOptions;
    if (volume->parsed()) return volumeOptions;
    return infoOptions;
}

bool WantsJson(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--json") return true;
    }
    return false;
}

} // namespace xcodhost
